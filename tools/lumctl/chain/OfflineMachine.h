#pragma once

#include "ChainView.h"
#include "Command.h"
#include "dll/DllSearch.h"
#include "MachineScope.h"
#include "OfflineChain.h"
#include "machine/MachineLock.h"
#include "online/OnlineHost.h"

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
    /// The same for people, for which the host is asked where the registry names none.
    CChainView Look()
    {
        CChainView view = Follow();
        view.bInService = !DescribeHostInService().empty();
        return view;
    }

    const CArguments& arguments;
    const std::string group;
    const WideText system;
    const CMachineLock lock;
    const CMachineScope scope;
    COfflineChain chain;
    const CChainValues values = chain.ReadValues();
};
