#include "HostView.h"
#include "JsonWriter.h"

namespace {

std::string Name(const WideText& text)
{
    return Shown(text);
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

std::string DescribeChain(const CHostView& view)
{
    std::string text;
    for (const WideText& gina : view.chain) {
        text += (text.empty() ? "" : " > ") + Name(gina);
    }
    if (view.bAnswers) {
        text += std::string(text.empty() ? "" : "; ") + "to the host, lum_gina.dll is " +
                (view.bInChain ? "in it" : "NOT in it");
    }
    return text.empty() ? "not known" : text;
}

std::string DescribeMonitor(const CHostView& view)
{
    const std::string unknown = "no request tells whether it runs";
    return view.dwMonitorSeconds == 0
               ? unknown
               : Format("every %u s; %s", static_cast<unsigned>(view.dwMonitorSeconds), unknown.c_str());
}

void PrintPluginArrayJson(CJsonWriter& json, const CPluginsView& view)
{
    json.Bool("configured", view.bConfigured);
    json.BeginArray("plugins");
    for (const CConfiguredDll& plugin : view.plugins) {
        json.BeginObject();
        json.Text("name", plugin.name);
        if (view.bAnswers) {
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

std::string DescribeVersion(DWORD dwVersion)
{
    return Format("0x%08x", static_cast<unsigned>(dwVersion));
}

void PrintPlugins(const CPluginsView& view, std::string& output)
{
    int nPlugin = 0;
    for (const CConfiguredDll& plugin : view.plugins) {
        output += Format("%2d  %-24s %s\n", ++nPlugin, Name(plugin.name).c_str(),
                         !view.bAnswers   ? "configured"
                         : plugin.bLoaded ? "loaded"
                                          : "NOT loaded");
    }
    output += !view.bConfigured      ? "The registry holds no configuration of the host.\n"
              : view.plugins.empty() ? "No plugins are configured.\n"
              : view.bAnswers ? "This is the configured order. Moves since the last start do not show.\n"
                              : "No host is in service; this is the configuration.\n";
}

void PrintPluginsJson(const CPluginsView& view, std::string& output)
{
    CJsonWriter json(output);
    json.BeginObject();
    PrintPluginArrayJson(json, view);
    json.EndObject();
}

void PrintHost(const CHostView& view, std::string& output)
{
    output += "Host         " + DescribeService(view) + "\n";
    output += "Chain        " + DescribeChain(view) + "\n";
    output += "Passthrough  " + DescribePassthrough(view) + "\n";
    output += "Monitor      " + DescribeMonitor(view) + "\n";
    output += "Plugins\n";
    PrintPlugins(view, output);
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
    json.BeginArray("chain");
    for (const WideText& gina : view.chain) {
        json.Text(nullptr, gina);
    }
    json.EndArray();
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
    json.Number("monitorSeconds", static_cast<long>(view.dwMonitorSeconds));
    PrintPluginArrayJson(json, view);
    json.EndObject();
}
