#include "ChainBuilder.h"

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

} // namespace

CChainBuilder::CChainBuilder(CKnownGinaList& knownGinas, CGinaChain& chain,
                             CWinlogonRegistry& winlogonRegistry, bool bNoRepair) noexcept
    : m_knownGinas(knownGinas), m_chain(chain), m_winlogonRegistry(winlogonRegistry), m_bNoRepair(bNoRepair),
      m_pInfo(nullptr), m_szCurrent{}
{
}

bool CChainBuilder::Build()
{
    if (!m_winlogonRegistry.GetGinaDLL(m_szCurrent, NAME_CAPACITY, false)) {
        *m_szCurrent = 0;
    }
    const auto know = [this](const WCHAR* szGinaDLL) { return Know(szGinaDLL); };
    const ChainEnd end = Follow(know, *this, m_szCurrent).end;
    if (end == ChainEnd::Cycle) {
        // Followed on, it would never end.
        CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_CYCLE, m_szCurrent);
    } else if (end == ChainEnd::Unknown) {
        CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_INCOMPLETE, m_szCurrent);
    }
    return end == ChainEnd::Complete;
}

std::optional<CChainingRecord> CChainBuilder::Know(const WCHAR* szGinaDLL)
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

void CChainBuilder::Reach(const WCHAR* szGinaDLL)
{
    Append(m_chain, MakeLink(m_chain, szGinaDLL));
}

CGinaName CChainBuilder::Read(const CChainingRecord& /*record*/)
{
    if (!m_pInfo->GetOldGinaDLL(m_szCurrent, NAME_CAPACITY)) {
        *m_szCurrent = 0;
    }
    return m_szCurrent;
}

CGinaName CChainBuilder::Repair(const WCHAR* szGinaDLL, const WCHAR* szPassthrough)
{
    if (m_bNoRepair) {
        return {};
    }
    CPassthroughWarning(LUM_GINA_ORIGIN, TXT_BAD_PASSTHROUGH, szGinaDLL, NO_VALUE);
    m_pInfo->SetOldGinaDLL(szPassthrough);
    const CGinaName passthrough = Read(m_pInfo->GetRecord());
    if (passthrough.empty()) {
        // The GINA's key may be closed to us; to write it again would change nothing.
        CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_NOT_FIXED, szGinaDLL);
    }
    return passthrough;
}
