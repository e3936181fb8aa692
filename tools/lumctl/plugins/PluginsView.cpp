#include "PluginsView.h"

#include <algorithm>

#include "GinaNames.h"
#include "MachineScope.h"
#include "PluginDll.h"
#include "PluginList.h"
#include "SafeStartNotes.h"
#include "dll/DllSearch.h"
#include "chain/OfflineChain.h"

namespace {

CPluginView LookAt(const WideText& name, const CSafeStartNotes& notes, const CArguments& arguments)
{
    const WideText system = ToWide(arguments.system);
    const CDllFile dll = InspectDll(name.c_str(), system.c_str());
    CPluginView plugin;
    plugin.name = name;
    plugin.trouble = notes.WhyLeftOut(name, dll.path, GetDllSearch(system).doubt.empty());
    plugin.bLeftOut = !plugin.trouble.empty();
    // The DLLs of a stopped machine are elsewhere.
    if (!plugin.bLeftOut && (!CMachineScope::IsHive() || !system.empty())) {
        plugin.trouble = FindPluginTrouble(dll);
    }
    return plugin;
}

} // namespace

CPluginView LookAtPlugin(const WideText& name, const CArguments& arguments)
{
    return LookAt(name, CSafeStartNotes(), arguments);
}

CPluginsView LookAtPlugins(COnlineHost& host, const CArguments& arguments)
{
    CPluginsView view;
    view.bAnswers = CMachineScope::IsThisMachine() && host.IsThere();
    if (!CMachineScope::IsThisMachine()) {
        COfflineChain::RequireWinlogonKey();
    }
    view.bConfigured = COfflineChain::HasOwnKey();
    if (!view.bConfigured) {
        return view;
    }
    const CSafeStartNotes notes;
    view.bNoPlugins = notes.IsWithoutPlugins();
    const CValueData list = ReadValue(PluginsPlace());
    if (list && (!IsText(list) || IsTooLong(list))) {
        view.unreadable = Describe(PluginsPlace()) + " is " +
                          (IsText(list) ? "longer than 259 characters" : Describe(list));
    }
    if (!view.bAnswers) {
        view.startEndedIn = notes.GetInPlugin();
    }
    for (const WideText& name : CPluginList(TextOf(list)).GetNames()) {
        CPluginView& plugin = view.plugins.emplace_back(LookAt(name, notes, arguments));
        plugin.bLoaded = view.bAnswers && host.Ask(host.Client().IsGinaInPluginList(name));
    }
    if (!view.plugins.empty() && !CMachineScope::IsThisMachine()) {
        const CDllSearch search = GetDllSearch(ToWide(arguments.system));
        view.dllDoubt =
            CMachineScope::IsHive() && !search.doubt.empty()
                ? "DLLs were not looked for: --system DIRECTORY must name the machine's system directory"
                : DescribeDoubt(search);
    }
    return view;
}

bool LacksSomething(const CPluginsView& view)
{
    const auto lacks = [&](const CPluginView& plugin) {
        // A host in service has shown itself which DLLs it can load.
        return plugin.bLeftOut || (view.bAnswers ? !plugin.bLoaded : !plugin.trouble.empty());
    };
    return (CMachineScope::IsThisMachine() && !view.bAnswers) || !view.unreadable.empty() ||
           std::any_of(view.plugins.begin(), view.plugins.end(), lacks);
}
