#include "OfflinePlugins.h"

#include <algorithm>

#include "CommandError.h"
#include "CommandLine.h"
#include "GinaNames.h"
#include "MachineScope.h"
#include "PluginDll.h"
#include "PluginList.h"
#include "SafeStartNotes.h"
#include "dll/DllSearch.h"

namespace {

WideText NameOf(const CArguments& arguments)
{
    return ToWide(arguments.words[0]);
}

/// The host neither reads nor writes a longer list, and says that it has done it.
void RequireRoom(const CValueData& list)
{
    if (IsTooLong(list)) {
        throw CCommandError("the list of plugins is, or would be, longer than 259 characters, which the host "
                            "cannot read; nothing has changed");
    }
}

CPluginList ReadList()
{
    const CValueData data = ReadValue(PluginsPlace());
    if (data && !IsText(data)) {
        throw CCommandError(Describe(PluginsPlace()) + " is " + Describe(data) +
                                ": delete this value first; nothing has changed",
                            STATUS_REFUSED);
    }
    RequireRoom(data);
    return CPluginList(TextOf(data));
}

CValueChange MakeListChange(const CPluginList& list)
{
    CValueChange change;
    change.before.Set(PluginsPlace(), ReadValue(PluginsPlace()));
    change.after.Set(PluginsPlace(),
                     WithTypeOf(change.before.Find(PluginsPlace())->data, MakeText(list.GetText().c_str())));
    return change;
}

void RequireConfigured(const CPluginList& list, const WideText& plugin)
{
    if (list.Find(plugin) == nullptr) {
        const WideText* pSame = list.FindSameDll(plugin);
        throw CCommandError(Shown(plugin) + " is not configured (" +
                                (pSame != nullptr ? "its DLL is, as " + Shown(*pSame)
                                                  : std::string("see lumctl plugins list")) +
                                "); nothing has changed",
                            STATUS_REFUSED);
    }
}

/// With --now the host loads it first, and changes nothing when it cannot.
void RequireDll(const CArguments& arguments)
{
    if (arguments.bForce || arguments.bNow) {
        return;
    }
    const WideText system = ToWide(arguments.system);
    RequireDllSearch(system);
    const CDllFile dll = InspectDll(NameOf(arguments).c_str(), system.c_str());
    if (const std::string trouble = FindPluginTrouble(dll); !trouble.empty()) {
        const std::string doubt =
            CMachineScope::IsThisMachine() ? std::string() : DescribeDoubt(GetDllSearch(system));
        throw CCommandError("the host could not load " + arguments.words[0] + ": " + trouble + ". " +
                                (doubt.empty() ? doubt : doubt + ". ") +
                                "Nothing has changed (--force adds it all the same)",
                            STATUS_REFUSED);
    }
}

std::optional<CValueChange> PlanMove(const CArguments& arguments, bool bUp)
{
    CPluginList list = ReadList();
    RequireConfigured(list, NameOf(arguments));
    return list.Move(NameOf(arguments), bUp) ? std::optional(MakeListChange(list)) : std::nullopt;
}

} // namespace

void CheckName(const std::string& name)
{
    if (name.empty()) {
        throw CUsageError("the name of the plugin is empty");
    }
    if (ToWide(name).size() > LONGEST_NAME) {
        throw CUsageError("the name is longer than 259 characters");
    }
}

void CheckNewName(const std::string& name)
{
    CheckName(name);
    const bool bControl =
        std::any_of(name.begin(), name.end(), [](unsigned char ch) { return ch < ' ' || ch == 0x7F; });
    if (bControl || name.find(',') != std::string::npos || HasBlanksAround(ToWide(name))) {
        throw CUsageError(
            "the name of a plugin has no comma and no control character in it and no blank around "
            "it, as \"" +
            Shown(ToWide(name)) + "\" has");
    }
}

bool IsConfigured(const WideText& plugin)
{
    return ReadList().Find(plugin) != nullptr;
}

std::optional<CValueChange> PlanAdd(const CArguments& arguments)
{
    const WideText plugin = NameOf(arguments);
    CPluginList list = ReadList();
    if (list.Find(plugin) != nullptr) {
        return std::nullopt;
    }
    if (const WideText* pSame = list.FindSameDll(plugin); pSame != nullptr) {
        throw CCommandError(Shown(plugin) + " is configured already, as " + Shown(*pSame) +
                                "; nothing has changed",
                            STATUS_REFUSED);
    }
    list.Add(plugin);
    RequireRoom(MakeText(list.GetText().c_str()));
    RequireDll(arguments);
    return MakeListChange(list);
}

std::optional<CValueChange> PlanRemove(const CArguments& arguments)
{
    CPluginList list = ReadList();
    RequireConfigured(list, NameOf(arguments));
    list.Remove(NameOf(arguments));
    return MakeListChange(list);
}

std::optional<CValueChange> PlanUp(const CArguments& arguments)
{
    return PlanMove(arguments, true);
}

std::optional<CValueChange> PlanDown(const CArguments& arguments)
{
    return PlanMove(arguments, false);
}

std::optional<CValueChange> PlanRetry(const CArguments& arguments)
{
    // The notes are the host's own. A configuration that it cannot read does not matter to them.
    const CValueData data = ReadValue(PluginsPlace());
    const CPluginList list(IsTooLong(data) ? WideText() : TextOf(data));
    const WideText* pSame = list.FindSameDll(NameOf(arguments));
    CValueChange change;
    AddRetry(pSame != nullptr ? *pSame : NameOf(arguments), change);
    if (!ListDifferences(change).empty()) {
        return change;
    }
    RequireConfigured(list, pSame != nullptr ? *pSame : NameOf(arguments));
    return std::nullopt;
}
