#pragma once

#include "ChainFindings.h"
#include "Command.h"

/// Values of a chain that are to be written, together.
struct CChainChange
{
    CChainValues before;
    /// All values as they are to be. Those that differ are written.
    CChainValues after;
    /// What was asked for, as in "chain enable".
    std::string command;
    /// The same for a host in service, as in "gina enable"; empty when there is no such command.
    std::string onlineCommand;
};

/// Prints and makes a change, in an order in which the machine comes up after each write, and reads it back.
/// A change after which a machine does not come up that does now is refused unless it is forced, and any
/// while a host is in service unless the arguments say that it is known. When something cannot be written,
/// what was there before is put back. STATUS_BAD when the machine will not come up all the same. Throws
/// CCommandError.
ExitStatus MakeChange(COfflineChain& chain, const CChainChange& change, const CArguments& arguments,
                      std::string& output);

/// The places of values that differ, in an order in which the machine comes up after each write if it does
/// with both chains: the new chain from its end to Winlogon, then what is in neither.
std::vector<CValuePlace> SafeOrder(COfflineChain& chain, const CChainValues& before,
                                   const CChainValues& after);
/// All places of the values, in such an order.
std::vector<CValuePlace> SafeOrder(COfflineChain& chain, const CChainValues& values);
