#include "PluginCommands.h"

#include "CommandError.h"
#include "CommandLine.h"
#include "GinaNames.h"
#include "JsonWriter.h"
#include "MachineScope.h"
#include "OfflinePlugins.h"
#include "PluginDll.h"
#include "PluginList.h"
#include "PluginsView.h"
#include "dll/DllSearch.h"
#include "chain/OfflineChain.h"
#include "machine/MachineLock.h"

namespace {

using Arguments = const CArguments&;

WideText NameOf(Arguments arguments)
{
    return ToWide(arguments.words[0]);
}

bool IsLoaded(COnlineHost& host, Arguments arguments)
{
    return host.Ask(host.Client().IsGinaInPluginList(NameOf(arguments)));
}

/// Whether the host's configuration can be seen: natively it has a registry of its own, and another machine's
/// is not looked at.
bool IsConfigurationSeen(Arguments arguments)
{
    return arguments.machine.empty() && COfflineChain::HasWinlogonKey();
}

/// What a change makes of the plugin's entry in the configuration.
enum class Entry
{
    Added,
    Removed,
    Moved, ///< in the registry only
    Stays,
};

/// A change of plugins.
struct CPluginVerb
{
    const char* szCommand;
    /// In the registry.
    std::optional<CValueChange> (*pfnPlan)(Arguments);
    /// Through the host; null when it has no part in it.
    ControlStatus (*pfnAsk)(CControlClient&, Arguments);
    /// Before that, where the configuration can be seen: false when all is so already. Throws CCommandError
    /// when the change is refused. May be null.
    bool (*pfnPrepare)(COnlineHost&, Arguments);
    /// Why the host could not do it, as far as that can be seen; may be empty.
    std::string (*pfnExplain)(COnlineHost&, Arguments);
    Entry entry;
    const char* szAlready; ///< behind the name
    const char* szByHost;  ///< what comes of it, behind the name, through the host
    const char* szInRegistry;
};

bool PrepareAdd(COnlineHost& host, Arguments arguments)
{
    return PlanAdd(arguments) || (arguments.bNow && !IsLoaded(host, arguments));
}

/// One that was taken out of the configuration is loaded until it is unloaded, too.
bool PrepareRemove(COnlineHost& host, Arguments arguments)
{
    if (!arguments.bNow || IsConfigured(NameOf(arguments)) || !IsLoaded(host, arguments)) {
        PlanRemove(arguments);
    }
    return true;
}

std::string ExplainAdd(COnlineHost&, Arguments arguments)
{
    if (!IsConfigurationSeen(arguments)) {
        return std::string();
    }
    const WideText system = ToWide(arguments.system);
    const std::string trouble = FindPluginTrouble(InspectDll(NameOf(arguments).c_str(), system.c_str()));
    return trouble.empty() ? trouble : arguments.words[0] + ": " + trouble;
}

std::string ExplainRemove(COnlineHost& host, Arguments arguments)
{
    return arguments.bNow && !IsLoaded(host, arguments) ? arguments.words[0] + " is not loaded"
                                                        : std::string();
}

template <bool bUp>
std::string ExplainMove(COnlineHost& host, Arguments arguments)
{
    return arguments.words[0] + (IsLoaded(host, arguments)
                                     ? std::string(" is the ") + (bUp ? "first" : "last") +
                                           " already, or calls inside the plugins did not end"
                                     : " is not loaded");
}

ControlStatus AskAdd(CControlClient& client, Arguments arguments)
{
    return client.AddPlugin(NameOf(arguments), arguments.bNow);
}

/// To the host the passthrough GINA is loaded like a plugin, and nobody could log on without it.
ControlStatus AskRemove(CControlClient& client, Arguments arguments)
{
    const WideText passthrough = IsConfigurationSeen(arguments)
                                     ? TextOf(ReadValue({LUM_GINA_MTM, TEXT("GinaDLL")}))
                                     : WideText(SYSTEM_GINA);
    if (arguments.bNow &&
        (IsSameDll(NameOf(arguments), SYSTEM_GINA) || IsSameDll(NameOf(arguments), passthrough)))
    {
        throw CCommandError(
            arguments.words[0] +
                " is the GINA that the host passes through to, and no plugin; nothing has changed",
            STATUS_REFUSED);
    }
    return client.RemovePlugin(NameOf(arguments), arguments.bNow);
}

ControlStatus AskUp(CControlClient& client, Arguments arguments)
{
    return client.IncreasePriority(NameOf(arguments));
}

ControlStatus AskDown(CControlClient& client, Arguments arguments)
{
    return client.DecreasePriority(NameOf(arguments));
}

// clang-format off
constexpr CPluginVerb ADD = {"plugins add", PlanAdd, AskAdd, PrepareAdd, ExplainAdd, Entry::Added,
    "is configured already", "is loaded", "is loaded"};
constexpr CPluginVerb REMOVE = {"plugins remove", PlanRemove, AskRemove, PrepareRemove, ExplainRemove, Entry::Removed,
    "", "is not loaded any more", "is not loaded any more"};
constexpr CPluginVerb UP = {"plugins up", PlanUp, AskUp, nullptr, ExplainMove<true>, Entry::Moved,
    "is the first already", "is called earlier", "is loaded earlier"};
constexpr CPluginVerb DOWN = {"plugins down", PlanDown, AskDown, nullptr, ExplainMove<false>, Entry::Moved,
    "is the last already", "is called later", "is loaded later"};
constexpr CPluginVerb RETRY = {"plugins retry", PlanRetry, nullptr, nullptr, nullptr, Entry::Stays,
    "is not left out", "", "is loaded again"};
// clang-format on

void PrintDone(Arguments arguments, bool bDone, const char* szWhen, const std::string& text,
               std::string& output)
{
    if (!arguments.bJson) {
        output += text;
        return;
    }
    output.clear();
    CJsonWriter json(output);
    json.BeginObject();
    json.Bool("done", bDone);
    json.Text("takesEffect", std::string(szWhen));
    json.EndObject();
}

ExitStatus SayAlready(const CPluginVerb& verb, Arguments arguments, std::string& output)
{
    PrintDone(arguments, true, "already", arguments.words[0] + " " + verb.szAlready + "; nothing to do.\n",
              output);
    return STATUS_DONE;
}

/// What the next start makes of a change, as plugins list shows it afterwards.
std::string DescribeNextStart(const CPluginVerb& verb, Arguments arguments)
{
    const bool bSeen = IsConfigurationSeen(arguments) && verb.entry != Entry::Removed;
    const std::string why = bSeen ? LookAtPlugin(NameOf(arguments), arguments).trouble : std::string();
    return "at the next start " + arguments.words[0] + " " +
           (why.empty() ? verb.szInRegistry : "is NOT loaded: " + why) + ".\n";
}

/// The notes of safe start are read by the start of a host only.
void RefuseWhileInService(const CPluginVerb& verb, Arguments arguments)
{
    if (!arguments.bInService && verb.pfnAsk != nullptr && COfflineChain::IsHostInService()) {
        throw CCommandError("lum_gina.dll is in service on this machine; nothing was written (--in-service "
                            "writes into the registry all the same)",
                            STATUS_REFUSED);
    }
}

ExitStatus ChangeRegistry(const CPluginVerb& verb, const CMachineScope& scope, Arguments arguments,
                          std::string& output)
{
    COfflineChain::RequireWinlogonKey();
    RefuseWhileInService(verb, arguments);
    std::optional<CValueChange> change = verb.pfnPlan(arguments);
    if (!change) {
        return SayAlready(verb, arguments, output);
    }
    change->command = verb.szCommand + (" " + arguments.words[0]);
    if (verb.entry == Entry::Added && !arguments.bForce) {
        PrintDoubt(GetDllSearch(ToWide(arguments.system)), output);
    }
    const std::vector<CValuePlace> places = ListDifferences(*change);
    PrintWrites(*change, places, output);
    if (arguments.bDryRun) {
        PrintDone(arguments, false, "never", "Nothing was written (--dry-run).\n", output);
        return STATUS_DONE;
    }
    WriteChange(*change, places, {places.rbegin(), places.rend()});
    scope.Save();
    PrintDone(arguments, true, "nextStart", "Written and read back: " + DescribeNextStart(verb, arguments),
              output);
    return STATUS_DONE;
}

/// The host says that it is done also of a list that it could not write.
void RequireEffect(const CPluginVerb& verb, Arguments arguments)
{
    const bool bEntered = verb.entry == Entry::Added;
    if ((bEntered || verb.entry == Entry::Removed) && IsConfigured(NameOf(arguments)) != bEntered) {
        throw CCommandError("the host says that it is done, and " + arguments.words[0] +
                                (bEntered ? " is not configured" : " is still configured"),
                            STATUS_UNCERTAIN);
    }
}

void PrintDoneByHost(const CPluginVerb& verb, Arguments arguments, std::string& output)
{
    const std::string result = arguments.words[0] + " " + verb.szByHost;
    if (verb.entry == Entry::Moved) {
        PrintDone(arguments, true, "untilNextStart", "Done: until the next start " + result + ".\n", output);
    } else if (arguments.bNow) {
        PrintDone(arguments, true, "now", "Done: " + result + ".\n", output);
    } else {
        PrintDone(arguments, true, "nextStart", "Done: " + DescribeNextStart(verb, arguments), output);
    }
}

/// What is to be done now takes a host; what is about the registry alone takes none.
bool IsForRegistry(const CPluginVerb& verb, Arguments arguments)
{
    const bool bRegistry =
        !arguments.registry.empty() || !arguments.hive.empty() || arguments.bInService || arguments.bDryRun;
    if (bRegistry && arguments.bNow) {
        throw CUsageError("--now is done by the host in service, and not in the registry of a machine");
    }
    if (bRegistry && !arguments.machine.empty()) {
        throw CUsageError("--machine asks a host, and writes into no registry");
    }
    return bRegistry || verb.pfnAsk == nullptr;
}

CChainValues ReadPlugins(bool bSeen)
{
    CChainValues values;
    if (bSeen) {
        values.Set(PluginsPlace(), ReadValue(PluginsPlace()));
    }
    return values;
}

/// One that was told to go has left the configuration, even if a call keeps it loaded.
[[noreturn]] void FailByHost(const CPluginVerb& verb, COnlineHost& host, Arguments arguments,
                             const CChainValues& before, bool bSeen)
{
    RequireUnchangedByHost({before, ReadPlugins(bSeen), verb.szCommand + (" " + arguments.words[0])});
    const std::string why = verb.pfnExplain(host, arguments);
    const bool bUnseen = !bSeen && arguments.bNow;
    throw CCommandError(
        NOT_DONE_BY_HOST + (why.empty() ? why : " (" + why + ")") +
            (bUnseen ? "; whether its configuration has changed cannot be seen from here" : ""),
        bUnseen ? STATUS_UNCERTAIN : STATUS_FAILED);
}

/// Nothing when the registry is to be changed instead. No lock is held: the host makes the change, and may
/// let one wait.
template <const CPluginVerb& verb>
std::optional<ExitStatus> ChangeByHost(Arguments arguments, std::string& output)
{
    COnlineHost host(arguments);
    const bool bSeen = IsConfigurationSeen(arguments);
    const CChainValues before = ReadPlugins(bSeen);
    if (bSeen && verb.pfnPrepare != nullptr && !verb.pfnPrepare(host, arguments)) {
        return SayAlready(verb, arguments, output);
    }
    const ControlStatus status = verb.pfnAsk(host.Client(), arguments);
    if (status == ControlStatus::NoServer && bSeen && !arguments.bNow) {
        return std::nullopt;
    }
    if (!host.Ask(status)) {
        FailByHost(verb, host, arguments, before, bSeen);
    }
    if (bSeen) {
        RequireEffect(verb, arguments);
    }
    PrintDoneByHost(verb, arguments, output);
    return STATUS_DONE;
}

template <const CPluginVerb& verb>
ExitStatus Change(Arguments arguments, std::string& output)
{
    (verb.entry == Entry::Added ? CheckNewName : CheckName)(arguments.words[0]);
    RequireDirectory(ToWide(arguments.system));
    if (!IsForRegistry(verb, arguments)) {
        if (const std::optional<ExitStatus> status = ChangeByHost<verb>(arguments, output); status) {
            return *status;
        }
    }
    const CMachineLock lock(arguments.registry, SayThatItWaits);
    const CMachineScope scope(arguments);
    return ChangeRegistry(verb, scope, arguments, output);
}

ExitStatus List(Arguments arguments, std::string& output)
{
    RequireDirectory(ToWide(arguments.system));
    const CMachineScope scope(arguments);
    COnlineHost host(arguments);
    const CPluginsView view = LookAtPlugins(host, arguments);
    (arguments.bJson ? PrintPluginsJson : PrintPlugins)(view, output);
    return arguments.bCheck && LacksSomething(view) ? STATUS_BAD : STATUS_DONE;
}

constexpr unsigned MACHINE = OPTION_REGISTRY | OPTION_HIVE | OPTION_SYSTEM;
constexpr unsigned LOOKS = OPTION_TIMEOUT | OPTION_JSON | MACHINE | OPTION_CHECK;
constexpr unsigned RETRIES = OPTION_JSON | OPTION_DRY_RUN | MACHINE | IS_CHANGE;
constexpr unsigned MOVES = RETRIES | OPTION_TIMEOUT | OPTION_MACHINE | OPTION_IN_SERVICE;

constexpr CCommand COMMANDS[] = {
    {"plugins list", "",
     "show the configured plugins, whether they are loaded, and whether the next start loads them", LOOKS,
     List},
    {"plugins add", "NAME", "configure a plugin as the last one", MOVES | OPTION_NOW | OPTION_FORCE,
     Change<ADD>},
    {"plugins remove", "NAME", "take a plugin out of the configuration", MOVES | OPTION_NOW, Change<REMOVE>},
    {"plugins up", "NAME",
     "call a loaded plugin earlier, until the next start; without a host, load it earlier from then on",
     MOVES, Change<UP>},
    {"plugins down", "NAME", "the same, later", MOVES, Change<DOWN>},
    {"plugins retry", "NAME", "let the next start load a plugin again that safe start leaves out", RETRIES,
     Change<RETRY>},
};

} // namespace

const std::span<const CCommand> PLUGIN_COMMANDS = COMMANDS;
