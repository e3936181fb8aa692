#include "ChainFindings.h"

#include <algorithm>

#include "dll/DllTrouble.h"
#include "GinaNames.h"
#include "JsonWriter.h"
#include "chaining/KnownGinas.h"
#include "plugins/PluginFindings.h"

namespace {

const char* NameOf(Severity severity)
{
    static constexpr const char* NAMES[] = {"danger", "doubt", "warning"};
    return NAMES[static_cast<int>(severity)];
}

class CChecker
{
public:
    CChecker(const CChainView& view, const WideText& system, Moment moment) : m_view(view), m_moment(moment)
    {
        // The host loads this one when it cannot load the GINA behind it.
        m_bFallback = InspectDll(SYSTEM_GINA, system.c_str()).state == CDllFile::State::Usable;
        CheckWinlogon();
        CheckLength(WinlogonPlace(), m_view.winlogon);
        for (std::size_t nLink = 0; nLink < view.links.size(); ++nLink) {
            CheckDll(nLink);
            CheckFlags(nLink);
            if (view.links[nLink].place) {
                CheckLength(*view.links[nLink].place, view.links[nLink].passthrough);
            }
        }
        CheckEnd();
        if (m_view.HasGina(HOST_GINA)) {
            AddOwnFindings(system, moment, m_findings);
        }
    }

    std::vector<CFinding> m_findings;

private:
    void Add(Severity severity, const std::string& text, const std::string& remedy)
    {
        m_findings.push_back({severity, text, remedy});
    }

    /// A remedy: what can be done by hand, or the lumctl command, where that would be carried out.
    std::string Remedy(const std::string& otherwise, const std::string& command) const
    {
        // A host in service changes only a chain that it knows to its end.
        const bool bRefused = m_view.bInService && m_view.end != ChainEnd::Complete;
        if (m_moment == Moment::AfterChange || bRefused) {
            return otherwise;
        }
        return (otherwise.empty() ? "" : otherwise + ", or ") +
               (m_view.bInService ? "lumctl gina " : "lumctl chain ") + command;
    }

    std::string Name(std::size_t nLink) const { return Shown(m_view.links[nLink].gina); }

    /// The one that loads this GINA.
    std::string Loader(std::size_t nLink) const { return nLink == 0 ? "Winlogon" : Name(nLink - 1); }

    void CheckWinlogon()
    {
        if (m_view.IsWinlogonNoText()) {
            Add(Severity::Danger,
                Describe(WinlogonPlace()) + " is " + Describe(m_view.winlogon) +
                    ", and nobody knows what Winlogon loads by that",
                Remedy("delete this value: Winlogon then loads msgina.dll", "enable"));
        } else if (m_view.winlogon && m_view.IsSystemGinaImplied()) {
            Add(Severity::Doubt, Describe(WinlogonPlace()) + " is there and names no GINA",
                Remedy("delete this value", "enable"));
        }
    }

    void CheckLength(const CValuePlace& place, const CValueData& data)
    {
        if (IsTooLong(data)) {
            Add(Severity::Danger,
                Describe(place) + " is a name of more than 259 characters, which nobody loads",
                "set it to the name of a GINA, such as msgina.dll");
        }
    }

    /// Why the GINA cannot be loaded; empty when it can.
    std::string TroubleWithDll(std::size_t nLink) const
    {
        const CLinkView& link = m_view.links[nLink];
        const std::string trouble = DescribeTrouble(link.dll, link.missing, "GINA");
        return trouble.empty() ? trouble : Name(nLink) + ", and " + trouble;
    }

    std::string RemedyForDll(std::size_t nLink) const
    {
        const std::string remedy = DescribeRemedy(m_view.links[nLink].dll, m_view.links[nLink].gina);
        // The system's own GINA cannot be taken out: it is what the others end with.
        if (EqualNames(m_view.links[nLink].gina.c_str(), SYSTEM_GINA)) {
            return remedy;
        }
        return Remedy(remedy, m_view.links[nLink].IsHost()
                                  ? "disable"
                                  : "remove " + ShownArgument(m_view.links[nLink].gina));
    }

    void CheckDll(std::size_t nLink)
    {
        const std::string trouble = TroubleWithDll(nLink);
        if (trouble.empty()) {
            return;
        }
        const bool bTolerated = nLink != 0 && m_view.links[nLink - 1].IsHost() && m_bFallback;
        AddBreak(bTolerated, Loader(nLink) + " loads " + trouble, RemedyForDll(nLink));
    }

    void CheckFlags(std::size_t nLink)
    {
        const CLinkView& link = m_view.links[nLink];
        if (link.bMustBeFirst && nLink != 0) {
            Add(Severity::Warning, Name(nLink) + " wants to be the first GINA and is behind " + Loader(nLink),
                Remedy("watch whether it works there", "remove " + ShownArgument(link.gina)));
        }
        if (link.bIsIncompatible && m_view.HasGina(HOST_GINA)) {
            Add(Severity::Warning, Name(nLink) + " is recorded as incompatible with lum_gina.dll",
                Remedy("watch whether it works there", "remove " + ShownArgument(link.gina)));
        }
    }

    void CheckEnd()
    {
        const CLinkView& last = m_view.links.back();
        const std::string name = Shown(last.gina);
        if (m_view.IsWinlogonNoText()) {
            return;
        }
        if (IsNoText(last.passthrough)) {
            AddBreak(last.IsHost() && m_bFallback,
                     name + " passes through to nothing that is a text: " + Describe(*last.place) + " is " +
                         Describe(last.passthrough),
                     "delete this value, and write it as a text (REG_SZ), such as msgina.dll");
        } else if (m_view.end == ChainEnd::Unknown) {
            CheckUnknown(last, name);
        } else if (m_view.end == ChainEnd::NoPassthrough) {
            AddBreak(last.IsHost() && m_bFallback, name + " passes through to nothing",
                     RemedyForPassthrough(last));
        } else if (m_view.end == ChainEnd::Cycle) {
            AddBreak(LeadsBackToHost(last) && m_bFallback,
                     name + " passes through to " + Shown(TextOf(last.passthrough)) +
                         ", which comes before it",
                     RemedyForPassthrough(last));
        }
    }

    /// The host, entered anew while it is being started, refuses that, so the GINA behind it cannot be used.
    static bool LeadsBackToHost(const CLinkView& last)
    {
        return EqualNames(LoadedName(TextOf(last.passthrough)).c_str(), HOST_GINA);
    }

    /// bTolerated: the host goes without what is behind it.
    void AddBreak(bool bTolerated, const std::string& text, const std::string& remedy)
    {
        Add(bTolerated ? Severity::Warning : Severity::Danger,
            text + (bTolerated ? "; lum_gina.dll makes do with msgina.dll" : ""), remedy);
    }

    void CheckUnknown(const CLinkView& last, const std::string& name)
    {
        const CValueData record = ReadValue(RecordPlace(last.gina));
        Add(Severity::Doubt,
            record
                ? "the chaining record of " + name + " cannot be understood: " + Describe(record)
                : name + " is unknown, so where the chain goes on cannot be seen nor anything in it changed",
            "describe it by a chaining record, the text value " + Describe(RecordPlace(last.gina)) +
                ": KEY,VALUE,msgina.dll,0,0,0,0, or NULL,NULL,NULL,1,1,0,0 when it passes through to "
                "nothing");
    }

    static std::string RemedyForPassthrough(const CLinkView& link)
    {
        return link.place
                   ? "set " + Describe(*link.place) + " to the GINA that is to follow, such as msgina.dll"
                   : std::string("correct its chaining record");
    }

    const CChainView& m_view;
    const Moment m_moment;
    bool m_bFallback = false;
};

} // namespace

std::vector<CFinding> CheckChain(const CChainView& view, const WideText& system, Moment moment)
{
    return std::move(CChecker(view, system, moment).m_findings);
}

bool HasSeverity(const std::vector<CFinding>& findings, Severity severity)
{
    return std::any_of(findings.begin(), findings.end(),
                       [=](const CFinding& finding) { return finding.severity == severity; });
}

void PrintFindings(const std::vector<CFinding>& findings, std::string& output, Moment moment)
{
    const char* szWhen = moment == Moment::AfterChange ? "after this change: " : "";
    for (const CFinding& finding : findings) {
        output += Format("%s%s: %s\n  remedy: %s\n", szWhen, NameOf(finding.severity), finding.text.c_str(),
                         finding.remedy.c_str());
    }
}

void PrintFindingsJson(const std::vector<CFinding>& findings, const CDllSearch& search, std::string& output)
{
    CJsonWriter json(output);
    json.BeginObject();
    if (!HasSeverity(findings, Severity::Danger) && HasSeverity(findings, Severity::Doubt)) {
        json.Null("safe");
    } else {
        json.Bool("safe", !HasSeverity(findings, Severity::Danger));
    }
    json.BeginArray("findings");
    for (const CFinding& finding : findings) {
        json.BeginObject();
        json.Text("severity", std::string(NameOf(finding.severity)));
        json.Text("text", finding.text);
        json.Text("remedy", finding.remedy);
        json.EndObject();
    }
    json.EndArray();
    AddDllSearchJson(json, search);
    json.EndObject();
}
