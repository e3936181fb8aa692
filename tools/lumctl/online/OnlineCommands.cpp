#include "OnlineCommands.h"

#include <cstdlib>

#include "CommandError.h"
#include "CommandLine.h"
#include "GinaNames.h"
#include "HostView.h"
#include "JsonWriter.h"
#include "MachineScope.h"
#include "dll/DllSearch.h"

namespace {

using Arguments = const CArguments&;

WideText FirstName(Arguments arguments)
{
    return ToWide(arguments.words[0]);
}

/// A command that changes something. When the host could not do it, nothing has changed, or its trace log
/// tells what has.
template <ControlStatus (*pfnChange)(CControlClient&, Arguments)>
ExitStatus Change(Arguments arguments, std::string& output)
{
    COnlineHost host(arguments);
    if (!host.Ask(pfnChange(host.Client(), arguments))) {
        throw CCommandError(NOT_DONE_BY_HOST);
    }
    PrintAnswer(arguments, "done", true, "Done.\n", output);
    return STATUS_DONE;
}

/// A question that is answered with yes or no.
template <ControlStatus (*pfnAsk)(CControlClient&, Arguments)>
ExitStatus Question(Arguments arguments, std::string& output)
{
    COnlineHost host(arguments);
    const bool bYes = host.Ask(pfnAsk(host.Client(), arguments));
    PrintAnswer(arguments, "answer", bYes, bYes ? "yes\n" : "no\n", output);
    return bYes ? STATUS_DONE : STATUS_BAD;
}

template <bool bEnable>
ControlStatus Monitor(CControlClient& client, Arguments)
{
    return client.EnableActiveRegistryMonitoring(bEnable);
}

ControlStatus IsInChain(CControlClient& client, Arguments arguments)
{
    return client.IsGinaInChainingList(FirstName(arguments));
}

DWORD ReadNumber(Arguments arguments, std::size_t nWord)
{
    if (arguments.words.size() <= nWord) {
        return 0;
    }
    const char* szText = arguments.words[nWord].c_str();
    char* pEnd = nullptr;
    // Wider than a DWORD on every target, so that what is too large is seen.
    const unsigned long long nValue = std::strtoull(szText, &pEnd, 0);
    if (*pEnd != '\0' || *szText < '0' || *szText > '9' || nValue > 0xFFFFFFFF) {
        throw CUsageError(std::string("plugins query needs numbers of 32 bits, not ") + szText);
    }
    return static_cast<DWORD>(nValue);
}

ControlStatus QueryPlugin(CControlClient& client, Arguments arguments)
{
    CControlQuery query;
    query.target = FirstName(arguments);
    query.dwParam1 = ReadNumber(arguments, 1);
    query.dwParam2 = ReadNumber(arguments, 2);
    query.dwParam3 = ReadNumber(arguments, 3);
    return client.QueryPlugin(query);
}

ExitStatus Ping(Arguments arguments, std::string& output)
{
    COnlineHost host(arguments);
    const bool bThere = host.IsThere();
    PrintAnswer(arguments, "inService", bThere,
                bThere ? "A host is in service.\n" : "No host is in service.\n", output);
    return bThere ? STATUS_DONE : STATUS_BAD;
}

ExitStatus Version(Arguments arguments, std::string& output)
{
    COnlineHost host(arguments);
    DWORD dwVersion = 0;
    host.Ask(host.Client().GetVersion(dwVersion));
    if (dwVersion == 0) {
        throw CCommandError("the host cannot tell its version; its trace log says why", STATUS_UNCERTAIN);
    }
    if (arguments.bJson) {
        CJsonWriter json(output);
        json.BeginObject();
        json.Text("version", DescribeVersion(dwVersion));
        json.EndObject();
    } else {
        output += DescribeVersion(dwVersion) + "\n";
    }
    return STATUS_DONE;
}

void PrintRecord(const ControlProtocol::CWireRecord& record, bool bJson, std::string& output)
{
    const std::string wlx = DescribeVersion(record.dwWlxVersion);
    const std::string plugin = Format("0x%08x", static_cast<unsigned>(record.dwLUMVersion));
    if (!bJson) {
        output += "GINA interface    " + wlx + "\nplugin interface  " + plugin + "\n";
        return;
    }
    CJsonWriter json(output);
    json.BeginObject();
    json.Text("ginaInterface", wlx);
    json.Text("pluginInterface", plugin);
    json.EndObject();
}

ExitStatus Info(Arguments arguments, std::string& output)
{
    COnlineHost host(arguments);
    ControlProtocol::CWireRecord record = {};
    if (!host.Ask(host.Client().QueryPluginInfo(FirstName(arguments), record))) {
        throw CCommandError(arguments.words[0] + " is not loaded, or does not tell", STATUS_BAD);
    }
    PrintRecord(record, arguments.bJson, output);
    return STATUS_DONE;
}

ExitStatus Passthrough(Arguments arguments, std::string& output)
{
    COnlineHost host(arguments);
    ControlProtocol::CWireRecord record = {};
    if (!host.Ask(host.Client().GetPassthroughGina(record))) {
        throw CCommandError("the host passes through to nothing", STATUS_BAD);
    }
    PrintRecord(record, arguments.bJson, output);
    return STATUS_DONE;
}

ExitStatus Status(Arguments arguments, std::string& output)
{
    RequireDirectory(ToWide(arguments.system));
    const CMachineScope scope(arguments);
    COnlineHost host(arguments);
    const CHostView view = LookAtHost(host, arguments);
    (arguments.bJson ? PrintHostJson : PrintHost)(view, output);
    const bool bGood = arguments.bCheck ? !LacksSomething(view) : view.bAnswers;
    return bGood ? STATUS_DONE : STATUS_BAD;
}

constexpr unsigned ASKS = OPTION_TIMEOUT | OPTION_JSON | OPTION_MACHINE;
constexpr unsigned LOOKS =
    OPTION_TIMEOUT | OPTION_JSON | OPTION_REGISTRY | OPTION_HIVE | OPTION_SYSTEM | OPTION_CHECK;
constexpr unsigned CHANGES = ASKS | IS_CHANGE;

constexpr CCommand COMMANDS[] = {
    {"status", "", "show whether a host is in service, and what is known of it", LOOKS, Status},
    {"ping", "", "say whether a host is in service", ASKS, Ping},
    {"version", "", "show the version of the host in service", ASKS, Version},
    {"plugins query", "NAME [P1] [P2] [P3]", "ask a loaded plugin, with up to three numbers", ASKS,
     Question<QueryPlugin>},
    {"plugins info", "NAME", "show the interface versions of a loaded plugin or GINA", ASKS, Info},
    {"gina in-chain", "NAME", "ask whether a GINA is in the chain", ASKS, Question<IsInChain>},
    {"gina passthrough", "", "show the interface versions of the passthrough GINA", ASKS, Passthrough},
    {"monitor on", "", "let the host watch the chain for changes by others", CHANGES, Change<Monitor<true>>},
    {"monitor off", "", "stop that", CHANGES, Change<Monitor<false>>},
};

} // namespace

const std::span<const CCommand> ONLINE_COMMANDS = COMMANDS;
