#include "ChainBuilder.h"

#include "GinaNames.h"
#include "WinlogonRegistry.h"

namespace {

constexpr WCHAR TXT_UNKNOWN[] = TEXT("An unknown gina has been encountered in the chaining list");
constexpr WCHAR TXT_NOT_LISTED[] = TEXT("The unknown gina is not listed in the registry");
constexpr WCHAR TXT_INCOMPLETE[] = TEXT("Gina chaining list is incomplete due to unknown Gina DLL");
constexpr WCHAR TXT_BAD_PASSTHROUGH[] = TEXT("A gina has a bad passthrough value. Attempting to fix...");
constexpr WCHAR TXT_NOT_FIXED[] =
    TEXT("Gina chaining list is incomplete due to a passthrough value that could not be fixed");
constexpr WCHAR TXT_CYCLE[] =
    TEXT("Gina chaining list is incomplete due to passthrough values that lead back to the same gina");
constexpr WCHAR NO_VALUE[] = TEXT("");

/// Answers from the registry what Follow asks, and takes the GINAs into a list on the way.
class CChainBuilder
{
public:
    CChainBuilder(CKnownGinaList& knownGinas, CGinaChain& chain) noexcept
        : m_knownGinas(knownGinas), m_chain(chain)
    {
    }

    std::optional<CChainingRecord> Know(const WCHAR* szGinaDLL)
    {
        m_pInfo = FindGina(m_knownGinas, szGinaDLL);
        if (m_pInfo == nullptr) {
            CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_UNKNOWN, szGinaDLL);
            m_pInfo = LearnGina(m_knownGinas, szGinaDLL);
        }
        if (m_pInfo == nullptr) {
            CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_NOT_LISTED, szGinaDLL);
            return std::nullopt;
        }
        return m_pInfo->GetRecord();
    }

    void Take() { Append(m_chain, MakeLink(m_chain, m_szCurrent)); }

    CGinaName ReadPassthrough()
    {
        if (!m_pInfo->GetOldGinaDLL(m_szCurrent, NAME_CAPACITY)) {
            *m_szCurrent = 0;
        }
        return m_szCurrent;
    }

    CGinaName Repair(const WCHAR* szGinaDLL, const WCHAR* szPassthrough)
    {
        CPassthroughWarning(LUM_GINA_ORIGIN, TXT_BAD_PASSTHROUGH, szGinaDLL, NO_VALUE);
        m_pInfo->SetOldGinaDLL(szPassthrough);
        const CGinaName passthrough = ReadPassthrough();
        if (passthrough.empty()) {
            // The host may lack the right to write the GINA's key. Writing again would change nothing.
            CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_NOT_FIXED, szGinaDLL);
        }
        return passthrough;
    }

    /// The name read last: Winlogon's GinaDLL, or a passthrough value.
    WCHAR m_szCurrent[NAME_CAPACITY] = {};

private:
    CKnownGinaList& m_knownGinas;
    CGinaChain& m_chain;
    /// What is known of the GINA that was asked for last.
    CGinaChainingInfoObject* m_pInfo = nullptr;
};

} // namespace

bool BuildChain(CKnownGinaList& knownGinas, CGinaChain& chain, CWinlogonRegistry& winlogonRegistry,
                bool bNoRepair)
{
    CChainBuilder builder(knownGinas, chain);
    if (!winlogonRegistry.GetGinaDLL(builder.m_szCurrent, NAME_CAPACITY, false)) {
        *builder.m_szCurrent = 0;
    }
    CChainSource source{[&](const WCHAR* szGinaDLL) { return builder.Know(szGinaDLL); },
                        [&](const CChainingRecord&) {
                            builder.Take();
                            return builder.ReadPassthrough();
                        }};
    if (!bNoRepair) {
        source.repair = [&](const auto* szGinaDLL, const auto* szText) {
            return builder.Repair(szGinaDLL, szText);
        };
    }
    const ChainEnd end = Follow(source, builder.m_szCurrent).end;
    if (end == ChainEnd::Cycle) {
        CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_CYCLE, builder.m_szCurrent);
    } else if (end == ChainEnd::Unknown) {
        builder.Take();
        CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_INCOMPLETE, builder.m_szCurrent);
    }
    return end == ChainEnd::Complete;
}
