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

/// Prints a change, writes it and reads it back. The machine can start after each single write.
///
/// Refuses a change that would keep a working machine from starting, unless it is forced. Refuses every
/// change while a host is in service, unless the arguments say that the caller knows of it. If a write fails,
/// the values from before are restored. Returns STATUS_BAD when the machine will not be able to start after
/// the change. Throws CCommandError.
ExitStatus MakeChange(COfflineChain& chain, const CChainChange& change, const CArguments& arguments,
                      std::string& output);

/// The places of the values that differ, in the order to write them: the new chain from its end to Winlogon,
/// then the rest. The machine can start after each write, if it can with both chains.
std::vector<CValuePlace> SafeOrder(COfflineChain& chain, const CChainValues& before,
                                   const CChainValues& after);
/// The places of all values, in the same order.
std::vector<CValuePlace> SafeOrder(COfflineChain& chain, const CChainValues& values);
