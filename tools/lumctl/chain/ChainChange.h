#pragma once

#include "ChainFindings.h"
#include "Command.h"
#include "registry/ValueChange.h"

/// A change of the values of a chain.
struct CChainChange : CValueChange
{
    /// The command for a host in service, as in "gina enable"; empty when there is no such command.
    std::string onlineCommand;
};

/// Prints what would be wrong with the machine after a change, and gives whether it would not come up.
/// Refuses a change that would keep a working machine from starting, unless it is forced. Throws CUsageError
/// and CCommandError.
bool CheckDanger(COfflineChain& chain, const CChainChange& change, const CArguments& arguments,
                 std::string& output);

/// Prints a change, writes it and reads it back. The machine can start after each single write.
///
/// Refuses what CheckDanger refuses, and every change while a host is in service, unless the arguments say
/// that the caller knows of it. If a write fails, the values from before are restored. Returns STATUS_BAD
/// when the machine will not be able to start after the change. Throws CUsageError and CCommandError.
ExitStatus MakeChange(COfflineChain& chain, const CChainChange& change, const CArguments& arguments,
                      std::string& output);

/// The places of the values that differ, in the order to write them: the new chain from its end to Winlogon,
/// then the rest. The machine can start after each write, if it can with both chains.
std::vector<CValuePlace> SafeOrder(COfflineChain& chain, const CChainValues& before,
                                   const CChainValues& after);
/// The places of all values, in the same order.
std::vector<CValuePlace> SafeOrder(COfflineChain& chain, const CChainValues& values);
