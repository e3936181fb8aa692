#include <algorithm>

#include "ChainView.h"
#include "JsonWriter.h"
#include "chaining/KnownGinas.h"

namespace {

const char* NameOf(Knowledge knowledge)
{
    static constexpr const char* NAMES[] = {"known", "record", "unknown"};
    return NAMES[static_cast<int>(knowledge)];
}

const char* NameOf(CDllFile::State state)
{
    static constexpr const char* NAMES[] = {"missing", "unreadable", "unusable", "leaving", "found"};
    return NAMES[static_cast<int>(state)];
}

std::string DescribeDll(const CLinkView& link)
{
    return link.missing.empty() ? NameOf(link.dll.state)
                                : Format("lacks %u", static_cast<unsigned>(link.missing.size()));
}

std::string DescribePassthrough(const CLinkView& link)
{
    if (link.bTerminator) {
        return "ends the chain";
    }
    return link.place ? Describe(*link.place) + " = " + Describe(link.passthrough)
                      : std::string("keeps nobody knows where what it passes through to");
}

std::string DescribeWinlogon(const CChainView& view)
{
    return Describe(view.winlogon) + (view.IsWinlogonNoText()      ? ", taken here for none"
                                      : view.IsSystemGinaImplied() ? ", so it loads its own GINA"
                                                                   : "");
}

std::string DescribeEnd(const CChainView& view)
{
    const std::string last = Shown(view.links.back().gina);
    if (view.IsWinlogonNoText()) {
        return "Which GINA Winlogon loads is not known, since its GinaDLL is no text.";
    }
    if (IsNoText(view.links.back().passthrough)) {
        return "The chain cannot be followed behind " + last + ", whose value is no text.";
    }
    switch (view.end) {
    case ChainEnd::Unknown:
        return "The chain cannot be followed behind " + last + ", which is unknown.";
    case ChainEnd::NoPassthrough:
        return "The chain breaks off behind " + last + ", which passes through to nothing.";
    case ChainEnd::Cycle:
        return "The chain leads back from " + last + " to a GINA before it.";
    default:
        return view.HasGina(HOST_GINA) ? "The chain is complete, and lum_gina.dll is in it."
                                       : "The chain is complete; lum_gina.dll is not in it.";
    }
}

void PrintPlaceJson(CJsonWriter& json, const char* szName, const CValuePlace& place, const CValueData& data)
{
    json.BeginObject(szName);
    json.Text("key", DescribeKey(place));
    json.Text("value", place.name);
    if (IsText(data)) {
        json.Text("text", TextOf(data));
    } else {
        json.Null("text");
    }
    if (data) {
        json.Number("type", data->dwType);
    } else {
        json.Null("type");
    }
    json.EndObject();
}

void PrintDllJson(CJsonWriter& json, const CLinkView& link)
{
    json.BeginObject("dll");
    json.Text("state", std::string(NameOf(link.dll.state)));
    json.Text("path", link.dll.path);
    json.BeginArray("missingExports");
    for (const std::string& name : link.missing) {
        json.Text(nullptr, name);
    }
    json.EndArray();
    json.EndObject();
}

void PrintLinkJson(CJsonWriter& json, const CLinkView& link)
{
    json.BeginObject();
    json.Text("gina", link.gina);
    json.Text("description", std::string(NameOf(link.knowledge)));
    json.Bool("terminator", link.bTerminator);
    if (link.place) {
        PrintPlaceJson(json, "passthrough", *link.place, link.passthrough);
    } else {
        json.Null("passthrough");
    }
    PrintDllJson(json, link);
    json.EndObject();
}

} // namespace

const char* NameOf(ChainEnd end)
{
    static constexpr const char* NAMES[] = {"complete", "unknown", "noPassthrough", "cycle"};
    return NAMES[static_cast<int>(end)];
}

void PrintChain(const CChainView& view, const CDllSearch& search, std::string& output)
{
    output += "Winlogon  " + Describe(WinlogonPlace()) + " = " + DescribeWinlogon(view) + "\n";
    std::size_t cchName = 0;
    for (const CLinkView& link : view.links) {
        cchName = std::max(cchName, Shown(link.gina).size());
    }
    int nLink = 0;
    for (const CLinkView& link : view.links) {
        output += Format("%2d  %-*s  %-7s  DLL %-10s  %s\n", ++nLink, static_cast<int>(cchName),
                         Shown(link.gina).c_str(), NameOf(link.knowledge), DescribeDll(link).c_str(),
                         DescribePassthrough(link).c_str());
    }
    output += DescribeEnd(view) + "\n";
    PrintDoubt(search, output);
    if (view.bInService) {
        output += "lum_gina.dll is in service: change the chain through it (lumctl gina enable, disable, "
                  "remove).\n";
    }
}

void PrintChainJson(const CChainView& view, const CDllSearch& search, std::string& output)
{
    CJsonWriter json(output);
    json.BeginObject();
    PrintPlaceJson(json, "winlogon", WinlogonPlace(), view.winlogon);
    json.BeginArray("chain");
    for (const CLinkView& link : view.links) {
        PrintLinkJson(json, link);
    }
    json.EndArray();
    json.Text("end", std::string(NameOf(view.end)));
    json.Bool("hostInChain", view.HasGina(HOST_GINA));
    json.Bool("inService", view.bInService);
    AddDllSearchJson(json, search);
    json.EndObject();
}
