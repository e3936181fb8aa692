#include "HostView.h"

#include "Message.h"
#include "chain/ChainView.h"
#include "chaining/KnownGinas.h"

namespace {

// The library's own default.
constexpr DWORD DEFAULT_SECONDS = 5;

std::vector<WideText> ReadChain()
{
    COfflineChain chain;
    std::vector<WideText> names;
    for (const CLinkView& link : FollowChain(chain, chain.ReadValues(), WideText()).links) {
        names.push_back(link.gina);
    }
    return names;
}

} // namespace

CHostView LookAtHost(COnlineHost& host, const CArguments& arguments)
{
    CHostView view;
    static_cast<CPluginsView&>(view) = LookAtPlugins(host, arguments);
    if (view.bConfigured) {
        const CValueData passthrough = ReadValue({LUM_GINA_MTM, TEXT("GinaDLL")});
        view.bMarkedEnabled = COfflineChain::IsHostInService();
        view.dwMonitorSeconds = NumberOf(ReadValue({LUM_GINA_MTM, TEXT("MonitorInterval")}));
        view.dwMonitorSeconds = view.dwMonitorSeconds != 0 ? view.dwMonitorSeconds : DEFAULT_SECONDS;
        view.passthrough = TextOf(passthrough);
        view.passthroughTrouble = passthrough && !IsText(passthrough) ? Describe(passthrough) : std::string();
        view.chain = ReadChain();
    }
    if (!view.bAnswers) {
        return view;
    }
    ControlProtocol::CWireRecord record = {};
    host.Ask(host.Client().GetVersion(view.dwVersion));
    view.bHasPassthroughRecord = host.Ask(host.Client().GetPassthroughGina(record));
    view.dwPassthroughVersion = record.dwWlxVersion;
    view.bPassthroughLoaded =
        !view.passthrough.empty() && host.Ask(host.Client().IsGinaInPluginList(view.passthrough));
    view.bInChain = host.Ask(host.Client().IsGinaInChainingList(HOST_GINA));
    return view;
}

bool LacksSomething(const CHostView& view)
{
    return !view.bAnswers || LacksSomething(static_cast<const CPluginsView&>(view)) ||
           !view.passthroughTrouble.empty() || (!view.passthrough.empty() && !view.bPassthroughLoaded);
}
