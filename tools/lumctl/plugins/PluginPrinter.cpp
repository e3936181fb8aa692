#include <algorithm>

#include "JsonWriter.h"
#include "PluginsView.h"

namespace {

std::string DescribeNow(const CPluginsView& view, const CPluginView& plugin)
{
    return !view.bAnswers ? "configured" : plugin.bLoaded ? "loaded" : "NOT loaded";
}

std::string DescribeNextStart(const CPluginView& plugin)
{
    return plugin.trouble.empty() ? "loaded" : "NOT loaded: " + plugin.trouble;
}

/// What the list does not show.
std::string DescribeRest(const CPluginsView& view)
{
    if (!view.bConfigured) {
        return "The registry holds no configuration of the host.\n";
    }
    if (view.plugins.empty()) {
        return std::string("No plugins are configured.") +
               (view.bAnswers ? " Removals since the last start do not show.\n" : "\n");
    }
    return view.bAnswers
               ? "This is the configured order. Moves and removals since the last start do not show.\n"
               : "No host is in service; this is the configuration.\n";
}

} // namespace

void PrintPlugins(const CPluginsView& view, std::string& output)
{
    std::size_t cchName = 24;
    for (const CPluginView& plugin : view.plugins) {
        cchName = std::max(cchName, Shown(plugin.name).size());
    }
    int nPlugin = 0;
    for (const CPluginView& plugin : view.plugins) {
        output += Format("%2d  %-*s %-10s  at the next start: %s\n", ++nPlugin, static_cast<int>(cchName),
                         Shown(plugin.name).c_str(), DescribeNow(view, plugin).c_str(),
                         DescribeNextStart(plugin).c_str());
    }
    output += DescribeRest(view);
    if (view.bNoPlugins) {
        output += "NoPlugins is set: the next start loads no plugin.\n";
    }
    if (!view.unreadable.empty()) {
        output += view.unreadable + ": the host cannot read it.\n";
    }
    if (!view.startEndedIn.empty()) {
        output += "The last start ended in " + Shown(view.startEndedIn) + ", or hangs there.\n";
    }
    if (!view.dllDoubt.empty()) {
        output += view.dllDoubt + ".\n";
    }
}

void PrintPluginsJson(const CPluginsView& view, std::string& output)
{
    CJsonWriter json(output);
    json.BeginObject();
    AddPluginsJson(json, view);
    json.EndObject();
}

void AddPluginsJson(CJsonWriter& json, const CPluginsView& view)
{
    const auto text = [&](const char* szName, const std::string& value) {
        value.empty() ? json.Null(szName) : json.Text(szName, value);
    };
    json.Bool("configured", view.bConfigured);
    json.Bool("noPlugins", view.bNoPlugins);
    json.BeginArray("plugins");
    for (const CPluginView& plugin : view.plugins) {
        json.BeginObject();
        json.Text("name", plugin.name);
        if (view.bAnswers) {
            json.Bool("loaded", plugin.bLoaded);
        } else {
            json.Null("loaded");
        }
        json.Bool("loadedAtNextStart", plugin.trouble.empty());
        json.Bool("leftOut", plugin.bLeftOut);
        text("trouble", plugin.trouble);
        json.EndObject();
    }
    json.EndArray();
    json.Text("order", std::string("configured"));
    text("unreadable", view.unreadable);
    text("startEndedIn", Shown(view.startEndedIn));
    text("dllDoubt", view.dllDoubt);
}
