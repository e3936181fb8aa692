#include "PluginFindings.h"

#include <algorithm>

#include "GinaNames.h"
#include "PluginDll.h"
#include "PluginList.h"
#include "dll/DllTrouble.h"
#include "SafeStartNames.h"

namespace {

/// The host's settings by their types. GinaDLL is part of the chain.
struct CSetting
{
    enum class Type
    {
        Text,     ///< also REG_EXPAND_SZ
        PureText, ///< REG_SZ; one of another type names every plugin
        Number,
    };

    bool IsGood(const CValueData& data) const
    {
        return type == Type::Text ? IsText(data)
                                  : data && data->dwType == (type == Type::Number ? REG_DWORD : REG_SZ);
    }

    const WCHAR* szName;
    Type type;
};

constexpr CSetting SETTINGS[] = {
    {PLUGINS_VALUE, CSetting::Type::Text},
    {REQUIRED_PLUGINS, CSetting::Type::PureText},
    {TEXT("Timeout"), CSetting::Type::Number},
    {TEXT("PipeInterval"), CSetting::Type::Number},
    {TEXT("MonitorInterval"), CSetting::Type::Number},
    {SAFE_START, CSetting::Type::Number},
    {NO_PLUGINS, CSetting::Type::Number},
    {EVENT_LOG_VALUE, CSetting::Type::Number},
    {TEXT("Debug"), CSetting::Type::Number},
};

void CheckType(const CSetting& setting, std::vector<CFinding>& findings)
{
    const CValuePlace place = {LUM_GINA_MTM, setting.szName};
    const CValueData data = ReadValue(place);
    if (data && !setting.IsGood(data)) {
        const char* szType = setting.type == CSetting::Type::Number ? "number (REG_DWORD)" : "text (REG_SZ)";
        findings.push_back({Severity::Warning,
                            Describe(place) + " is " + Describe(data) + " and no " + szType,
                            std::string("delete this value, and write it as a ") + szType});
    }
}

void CheckPlugin(const WideText& plugin, const WideText& system, Moment moment,
                 std::vector<CFinding>& findings)
{
    const auto add = [&](const std::string& text, const std::string& remedy) {
        const std::string command = "lumctl plugins remove " + ShownArgument(plugin);
        findings.push_back(
            {Severity::Warning, text, moment == Moment::AfterChange ? remedy : remedy + ", or " + command});
    };
    const CDllFile dll = InspectDll(plugin.c_str(), system.c_str());
    if (HasBlanksAround(plugin)) {
        add("the plugin " + ShownArgument(plugin) + " is configured with a blank around its name",
            "take the blank out of " + Describe(PluginsPlace()));
    } else if (const std::string trouble = FindPluginTrouble(dll); !trouble.empty()) {
        add("lum_gina.dll goes without the plugin " + Shown(plugin) + ": " + trouble,
            DescribeRemedy(dll, plugin));
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
