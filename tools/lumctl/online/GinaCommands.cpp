#include "GinaCommands.h"

#include "CommandError.h"
#include "GinaNames.h"
#include "OnlineHost.h"
#include "chain/ChainPlan.h"

namespace {

using Arguments = const CArguments&;

/// A change of the chain.
struct CGinaVerb
{
    /// In the registry; nothing when it says so already.
    std::optional<CChainChange> (*pfnPlan)(COfflineMachine&, std::string& output);
    ControlStatus (*pfnAsk)(CControlClient&, Arguments);
    /// Whether the host's own chain has the GINA when all is done.
    bool bInChain;
    /// What is so already; null when there must be something to do.
    const char* szAlready;
};

ControlStatus AskEnable(CControlClient& client, Arguments)
{
    return client.EnableGina(true);
}

ControlStatus AskDisable(CControlClient& client, Arguments)
{
    return client.EnableGina(false);
}

ControlStatus AskRemove(CControlClient& client, Arguments arguments)
{
    return client.RemoveGina(ToWide(arguments.words[0]));
}

std::optional<CChainChange> PlanRemoval(COfflineMachine& machine, std::string& output)
{
    return PlanRemove(machine, machine.arguments.words[0], output);
}

constexpr CGinaVerb ENABLE = {PlanEnable, AskEnable, true,
                              "lum_gina.dll is in the chain already; nothing to do.\n"};
constexpr CGinaVerb DISABLE = {PlanDisable, AskDisable, false,
                               "lum_gina.dll is not in the chain; nothing to do.\n"};
constexpr CGinaVerb REMOVE = {PlanRemoval, AskRemove, false, nullptr};

/// Whether there is anything to do, in the registry as it can be seen. Refuses what would be refused where no
/// host runs: the host itself does not look at DLLs.
bool IsToBeDone(const CGinaVerb& verb, COfflineMachine& machine, std::string& output)
{
    const std::optional<CChainChange> change = verb.pfnPlan(machine, output);
    if (change) {
        CheckDanger(machine.chain, *change, machine.arguments, output);
    }
    return change.has_value();
}

/// The host may have written a part of it.
[[noreturn]] void FailByHost(COfflineMachine* pMachine)
{
    if (pMachine != nullptr) {
        RequireUnchangedByHost({pMachine->values, pMachine->chain.ReadValues(), "the change"});
    }
    throw CCommandError(NOT_DONE_BY_HOST);
}

template <const CGinaVerb& verb>
ExitStatus Change(Arguments arguments, std::string& output)
{
    COnlineHost host(arguments);
    const WideText gina = arguments.words.empty() ? WideText(HOST_GINA) : ToWide(arguments.words[0]);
    const bool bAlready = host.Ask(host.Client().IsGinaInChainingList(gina)) == verb.bInChain;
    // Locked until the host has answered, so that what is decided on does not change before. Natively a host
    // has a registry that is not seen from here.
    std::optional<COfflineMachine> machine;
    if (COfflineChain::HasWinlogonKey()) {
        machine.emplace(arguments, "gina");
    }
    const bool bToDo = machine && IsToBeDone(verb, *machine, output);
    if (bAlready && !bToDo) {
        if (verb.szAlready == nullptr) {
            throw CCommandError("gina remove: there is no such GINA in the chain (see lumctl chain show)",
                                STATUS_REFUSED);
        }
        PrintAnswer(arguments, "done", true, verb.szAlready, output);
        return STATUS_DONE;
    }
    if (!host.Ask(verb.pfnAsk(host.Client(), arguments))) {
        FailByHost(machine ? &*machine : nullptr);
    }
    PrintAnswer(arguments, "done", true, "Done: Winlogon follows it at the next start.\n", output);
    return STATUS_DONE;
}

constexpr unsigned CHANGES = OPTION_TIMEOUT | OPTION_JSON | OPTION_SYSTEM | OPTION_FORCE | IS_CHANGE;

constexpr CCommand COMMANDS[] = {
    {"gina enable", "", "let the host put lum_gina.dll first into the chain", CHANGES, Change<ENABLE>},
    {"gina disable", "", "let the host take lum_gina.dll out of the chain", CHANGES, Change<DISABLE>},
    {"gina remove", "NAME", "let the host take another GINA out of the chain", CHANGES, Change<REMOVE>},
};

} // namespace

const std::span<const CCommand> GINA_COMMANDS = COMMANDS;
