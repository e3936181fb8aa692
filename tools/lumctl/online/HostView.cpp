#include "HostView.h"

#include <algorithm>
#include <cstring>

#include "Message.h"
#include "chain/ChainView.h"
#include "chaining/KnownGinas.h"

namespace {

// The library's own default.
constexpr DWORD DEFAULT_SECONDS = 5;

WideText ReadText(const WCHAR* szValue)
{
    return TextOf(ReadValue({LUM_GINA_MTM, szValue}));
}

DWORD ReadNumber(const CValuePlace& place)
{
    DWORD dwNumber = 0;
    const CValueData data = ReadValue(place);
    if (data && data->bytes.size() == sizeof(dwNumber)) {
        std::memcpy(&dwNumber, data->bytes.data(), sizeof(dwNumber));
    }
    return dwNumber;
}

bool HasConfiguration()
{
    HKEY hKey = nullptr;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, LUM_GINA_MTM, 0, KEY_READ, &hKey) == ERROR_SUCCESS &&
           RegCloseKey(hKey) == ERROR_SUCCESS;
}

/// Splits the list as the library does, which skips empty entries.
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

std::vector<WideText> ReadChain()
{
    COfflineChain chain;
    std::vector<WideText> names;
    for (const CLinkView& link : FollowChain(chain, chain.ReadValues(), WideText()).links) {
        names.push_back(link.gina);
    }
    return names;
}

void AskAboutPlugins(COnlineHost& host, CPluginsView& view)
{
    view.bAnswers = host.IsThere();
    view.bConfigured = HasConfiguration();
    view.plugins = SplitPlugins(ReadText(TEXT("Plugins")));
    for (CConfiguredDll& plugin : view.plugins) {
        plugin.bLoaded = view.bAnswers && host.Ask(host.Client().IsGinaInPluginList(plugin.name));
    }
}

} // namespace

std::optional<std::size_t> MeasurePluginList()
{
    const CValueData list = ReadValue({LUM_GINA_MTM, TEXT("Plugins")});
    return IsTooLong(list) ? std::nullopt : std::optional(TextOf(list).size());
}

CPluginsView LookAtPlugins(COnlineHost& host)
{
    CPluginsView view;
    AskAboutPlugins(host, view);
    return view;
}

CHostView LookAtHost(COnlineHost& host)
{
    CHostView view;
    AskAboutPlugins(host, view);
    if (view.bConfigured) {
        view.bMarkedEnabled = ReadNumber({WideText(LUM_GINA_MTM) + TEXT("\\Volatile"), TEXT("Enabled")}) != 0;
        view.dwMonitorSeconds = ReadNumber({LUM_GINA_MTM, TEXT("MonitorInterval")});
        view.dwMonitorSeconds = view.dwMonitorSeconds != 0 ? view.dwMonitorSeconds : DEFAULT_SECONDS;
        view.passthrough.name = ReadText(TEXT("GinaDLL"));
        view.chain = ReadChain();
    }
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
