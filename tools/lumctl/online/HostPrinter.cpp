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
    std::string text = !view.passthroughTrouble.empty() ? view.passthroughTrouble
                       : view.passthrough.empty()       ? "none configured"
                                                        : Name(view.passthrough);
    if (view.bAnswers && !view.passthrough.empty()) {
        text += view.bPassthroughLoaded ? ", loaded" : ", NOT loaded";
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

} // namespace

std::string DescribeVersion(DWORD dwVersion)
{
    return Format("0x%08x", static_cast<unsigned>(dwVersion));
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
    json.Text("name", view.passthrough);
    if (view.bAnswers) {
        json.Bool("loaded", view.bPassthroughLoaded);
    }
    if (view.bHasPassthroughRecord) {
        json.Text("interfaceVersion", DescribeVersion(view.dwPassthroughVersion));
    }
    json.EndObject();
    json.Null("monitor");
    json.Number("monitorSeconds", static_cast<long>(view.dwMonitorSeconds));
    AddPluginsJson(json, view);
    json.EndObject();
}
