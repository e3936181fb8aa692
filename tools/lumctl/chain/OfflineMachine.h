#pragma once

#include "ChainView.h"
#include "Command.h"
#include "dll/DllSearch.h"
#include "MachineScope.h"
#include "OfflineChain.h"
#include "machine/MachineLock.h"

/// The machine that a command line names, locked, and its chain.
class COfflineMachine
{
public:
    /// szGroupOf: the group of the command, for messages. Throws CUsageError, CSetupError and CCommandError.
    explicit COfflineMachine(const CArguments& given, const char* szGroupOf = "chain")
        : arguments(given), group(szGroupOf), system(ToWide(given.system)),
          lock(given.registry, SayThatItWaits), scope(given)
    {
        RequireDirectory(system);
    }

    CChainView Follow() { return FollowChain(chain, values, system); }

    const CArguments& arguments;
    const std::string group;
    const WideText system;
    const CMachineLock lock;
    const CMachineScope scope;
    COfflineChain chain;
    const CChainValues values = chain.ReadValues();
};
