#include "HostView.h"

#include <algorithm>

#include "Messages.h"
#include "chain/ChainValues.h"
#include "chaining/KnownGinas.h"

namespace {

WideText ReadText(const WCHAR* szValue)
{
    return TextOf(ReadValue({LUM_GINA_MTM, szValue}));
}

bool IsMarkedEnabled()
{
    const CValueData data = ReadValue({WideText(LUM_GINA_MTM) + TEXT("\\Volatile"), TEXT("Enabled")});
    return data && !data->bytes.empty() && data->bytes[0] != 0;
}

/// As the library takes the list apart; it passes over empty entries.
std::vector<CConfiguredDll> SplitPlugins(const WideText& list)
{
    std::vector<CConfiguredDll> plugins;
    for (std::size_t nBegin = 0; nBegin <= list.size();) {
        const std::size_t nComma = std::min(list.find(WCHAR(','), nBegin), list.size());
        if (nComma != nBegin) {
            plugins.push_back({list.substr(nBegin, nComma - nBegin)});
        }
        nBegin = nComma + 1;
    }
    return plugins;
}

} // namespace

std::vector<CConfiguredDll> LookAtPlugins(COnlineHost& host, bool bAsk)
{
    std::vector<CConfiguredDll> plugins = SplitPlugins(ReadText(TEXT("Plugins")));
    for (CConfiguredDll& plugin : plugins) {
        plugin.bLoaded = bAsk && host.Ask(host.Client().IsGinaInPluginList(plugin.name));
    }
    return plugins;
}

CHostView LookAtHost(COnlineHost& host)
{
    CHostView view;
    view.bMarkedEnabled = IsMarkedEnabled();
    view.bAnswers = host.IsThere();
    view.plugins = LookAtPlugins(host, view.bAnswers);
    view.passthrough.name = ReadText(TEXT("GinaDLL"));
    if (!view.bAnswers) {
        return view;
    }
    ControlProtocol::CWireRecord record = {};
    host.Ask(host.Client().GetVersion(view.dwVersion));
    view.bHasPassthroughRecord = host.Ask(host.Client().GetPassthroughGina(record));
    view.dwPassthroughVersion = record.dwWlxVersion;
    view.passthrough.bLoaded =
        !view.passthrough.name.empty() && host.Ask(host.Client().IsGinaInPluginList(view.passthrough.name));
    view.bInChain = host.Ask(host.Client().IsGinaInChainingList(HOST_GINA));
    return view;
}
