#include "ChainBuilder.h"

#include "WinlogonRegistry.h"
#include "KnownGinas.h"

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
    if (*m_szCurrent == 0) {
        return true;
    }
    do {
        if (!(*m_szCurrent != 0 ? AppendCurrent() : RepairLast())) {
            return false;
        }
    } while (!m_pInfo->m_bTerminator);
    return true;
}

bool CChainBuilder::AppendCurrent()
{
    if (IsInChain(m_chain, m_szCurrent)) {
        // Followed on, it would never end.
        CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_CYCLE, m_szCurrent);
        return false;
    }
    CGinaChainingInfoObject* pInfo = FindGina(m_knownGinas, m_szCurrent);
    if (pInfo == nullptr) {
        CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_UNKNOWN, m_szCurrent);
        pInfo = LearnGina(m_knownGinas, m_szCurrent);
    }
    if (pInfo == nullptr) {
        return AppendUnknown();
    }
    Append(m_chain, MakeLink(m_chain, m_szCurrent));
    m_pInfo = pInfo;
    ReadPassthrough();
    return true;
}

bool CChainBuilder::AppendUnknown()
{
    CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_NOT_LISTED, m_szCurrent);
    Append(m_chain, MakeLink(m_chain, m_szCurrent));
    CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_INCOMPLETE, m_szCurrent);
    return false;
}

bool CChainBuilder::RepairLast()
{
    if (m_bNoRepair) {
        return false;
    }
    const WCHAR* szGinaDLL = NameOf(*m_chain.m_pTail);
    CPassthroughWarning(LUM_GINA_ORIGIN, TXT_BAD_PASSTHROUGH, szGinaDLL, NO_VALUE);
    const WCHAR* szDefault = m_pInfo->m_szDefaultGinaDLL;
    // An empty default names no GINA that could follow.
    const bool bUsable = szDefault != nullptr && *szDefault != 0 && !IsInChain(m_chain, szDefault);
    m_pInfo->SetOldGinaDLL(bUsable ? szDefault : SYSTEM_GINA);
    ReadPassthrough();
    if (*m_szCurrent == 0) {
        // The GINA's key may be closed to us; to write it again would change nothing.
        CGinaDLLWarning(LUM_GINA_ORIGIN, TXT_NOT_FIXED, szGinaDLL);
        return false;
    }
    return true;
}

void CChainBuilder::ReadPassthrough() noexcept
{
    if (!m_pInfo->GetOldGinaDLL(m_szCurrent, NAME_CAPACITY)) {
        *m_szCurrent = 0;
    }
}
