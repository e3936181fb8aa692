#include "HostView.h"
#include "JsonWriter.h"

namespace {

std::string Name(const WideText& text)
{
    return ToNarrow(text.c_str());
}

std::string DescribeVersion(DWORD dwVersion)
{
    return Format("0x%08x", static_cast<unsigned>(dwVersion));
}

std::string DescribeService(const CHostView& view)
{
    if (view.bAnswers) {
        return "in service, version " + (view.dwVersion != 0 ? DescribeVersion(view.dwVersion) : "not known");
    }
    return view.bMarkedEnabled ? "marked as in service, and does not answer" : "not in service";
}

std::string DescribePassthrough(const CHostView& view)
{
    std::string text = view.passthrough.name.empty() ? "none configured" : Name(view.passthrough.name);
    if (view.bAnswers && !view.passthrough.name.empty()) {
        text += view.passthrough.bLoaded ? ", loaded" : ", NOT loaded";
    }
    if (view.bHasPassthroughRecord) {
        text += "; what is loaded speaks interface version " + DescribeVersion(view.dwPassthroughVersion);
    }
    return text;
}

void PrintVersionJson(CJsonWriter& json, DWORD dwVersion)
{
    if (dwVersion != 0) {
        json.Text("version", DescribeVersion(dwVersion));
    } else {
        json.Null("version");
    }
}

void PrintPluginArrayJson(CJsonWriter& json, const std::vector<CConfiguredDll>& plugins, bool bAnswers)
{
    json.BeginArray("plugins");
    for (const CConfiguredDll& plugin : plugins) {
        json.BeginObject();
        json.Text("name", plugin.name);
        if (bAnswers) {
            json.Bool("loaded", plugin.bLoaded);
        } else {
            json.Null("loaded");
        }
        json.EndObject();
    }
    json.EndArray();
    json.Text("order", std::string("configured"));
}

} // namespace

void PrintPlugins(const std::vector<CConfiguredDll>& plugins, bool bAnswers, std::string& output)
{
    int nPlugin = 0;
    for (const CConfiguredDll& plugin : plugins) {
        output += Format("%2d  %-24s %s\n", ++nPlugin, Name(plugin.name).c_str(),
                         !bAnswers        ? "configured"
                         : plugin.bLoaded ? "loaded"
                                          : "NOT loaded");
    }
    output += plugins.empty() ? "No plugins are configured.\n"
              : bAnswers      ? "This is the configured order. Moves since the last start do not show.\n"
                              : "No host is in service; this is the configuration.\n";
}

void PrintPluginsJson(const std::vector<CConfiguredDll>& plugins, bool bAnswers, std::string& output)
{
    CJsonWriter json(output);
    json.BeginObject();
    PrintPluginArrayJson(json, plugins, bAnswers);
    json.EndObject();
}

void PrintHost(const CHostView& view, std::string& output)
{
    output += "Host         " + DescribeService(view) + "\n";
    if (view.bAnswers) {
        output += std::string("Chain        lum_gina.dll is ") + (view.bInChain ? "" : "NOT ") + "in it\n";
    }
    output += "Passthrough  " + DescribePassthrough(view) + "\n";
    output += "Monitor      not known: no request tells\n";
    output += "Plugins\n";
    PrintPlugins(view.plugins, view.bAnswers, output);
}

void PrintHostJson(const CHostView& view, std::string& output)
{
    CJsonWriter json(output);
    json.BeginObject();
    json.Bool("answers", view.bAnswers);
    json.Bool("markedEnabled", view.bMarkedEnabled);
    if (view.bAnswers) {
        PrintVersionJson(json, view.dwVersion);
        json.Bool("inChain", view.bInChain);
    }
    json.BeginObject("passthrough");
    json.Text("name", view.passthrough.name);
    if (view.bAnswers) {
        json.Bool("loaded", view.passthrough.bLoaded);
    }
    if (view.bHasPassthroughRecord) {
        json.Text("interfaceVersion", DescribeVersion(view.dwPassthroughVersion));
    }
    json.EndObject();
    json.Null("monitor");
    PrintPluginArrayJson(json, view.plugins, view.bAnswers);
    json.EndObject();
}
