#include "PluginFindings.h"

#include <algorithm>

#include "GinaNames.h"
#include "PluginDll.h"
#include "PluginList.h"

namespace {

/// The host's settings by their types. GinaDLL is part of the chain.
struct CSetting
{
    const WCHAR* szName;
    bool bText;
};

constexpr CSetting SETTINGS[] = {
    {TEXT("Plugins"), true},       {TEXT("RequiredPlugins"), true},  {TEXT("Timeout"), false},
    {TEXT("PipeInterval"), false}, {TEXT("MonitorInterval"), false}, {TEXT("SafeStart"), false},
    {TEXT("NoPlugins"), false},    {TEXT("EventLog"), false},        {TEXT("Debug"), false},
};

void CheckType(const CSetting& setting, std::vector<CFinding>& findings)
{
    const CValuePlace place = {LUM_GINA_MTM, setting.szName};
    const CValueData data = ReadValue(place);
    const bool bGood = setting.bText ? IsText(data) : data && data->dwType == REG_DWORD;
    if (data && !bGood) {
        findings.push_back(
            {Severity::Warning,
             Describe(place) + " is " + Describe(data) + " and no " + (setting.bText ? "text" : "number"),
             std::string("delete this value, and write it as a ") +
                 (setting.bText ? "text (REG_SZ)" : "number (REG_DWORD)")});
    }
}

void CheckPlugin(const WideText& plugin, const WideText& system, Moment moment,
                 std::vector<CFinding>& findings)
{
    const std::string trouble = FindPluginTrouble(plugin, system);
    if (!trouble.empty()) {
        const std::string remedy = "put " + Shown(plugin) + " into the system directory";
        findings.push_back(
            {Severity::Warning, "lum_gina.dll goes without the plugin " + Shown(plugin) + ": " + trouble,
             moment == Moment::AfterChange ? remedy
                                           : remedy + ", or lumctl plugins remove " + Shown(plugin)});
    }
}

void CheckPlugins(const CValueData& list, const WideText& system, Moment moment,
                  std::vector<CFinding>& findings)
{
    if (IsTooLong(list)) {
        findings.push_back(
            {Severity::Warning,
             Describe(PluginsPlace()) +
                 " is longer than 259 characters: the host cannot read it, and loads no plugin",
             "shorten it"});
        return;
    }
    const std::vector<WideText> plugins = CPluginList(TextOf(list)).GetNames();
    for (auto plugin = plugins.begin(); plugin != plugins.end(); ++plugin) {
        const bool bTwice = std::any_of(plugins.begin(), plugin,
                                        [&](const WideText& other) { return IsSameDll(other, *plugin); });
        if (bTwice) {
            findings.push_back({Severity::Warning, "the plugin " + Shown(*plugin) + " is configured twice",
                                "take one of the two out of " + Describe(PluginsPlace())});
        } else {
            CheckPlugin(*plugin, system, moment, findings);
        }
    }
}

} // namespace

void AddOwnFindings(const WideText& system, Moment moment, std::vector<CFinding>& findings)
{
    for (const CSetting& setting : SETTINGS) {
        CheckType(setting, findings);
    }
    CheckPlugins(ReadValue(PluginsPlace()), system, moment, findings);
}
