#include "ChainWriter.h"

#include "MachineValue.h"
#include "WinlogonRegistry.h"

namespace {

constexpr WCHAR TXT_EMPTY[] = TEXT("Chaining list is empty");

/// Winlogon falls back to its own GINA when there is no such value. It is not read first: one that cannot be
/// read has to go, too.
void DeleteGinaDLL() noexcept
{
    try {
        OpenMachineValue<CRegistryString>(LUM_GINA_ORIGIN, WINLOGON_KEY, WINLOGON_GINA_DLL, false, false)
            ->DeleteRegistryValue();
    } catch (...) {
        if (!IsHandling<CMessage>()) {
            CWarning(LUM_GINA_ORIGIN, ERR_UNHANDLED_EXCEPTION);
        }
    }
}

} // namespace

void WriteChain(CKnownGinaList& knownGinas, const CGinaChain& chain, CWinlogonRegistry& winlogonRegistry)
{
    if (chain.m_pHead == nullptr) {
        DeleteGinaDLL();
        CWarning(LUM_GINA_ORIGIN, TXT_EMPTY);
        return;
    }
    winlogonRegistry.SetGinaDLL(NameOf(*chain.m_pHead));
    for (const CGinaLink* pLink = chain.m_pHead; pLink != nullptr; pLink = pLink->pNext) {
        CGinaChainingInfoObject* pInfo = FindGina(knownGinas, NameOf(*pLink));
        if (pInfo != nullptr) {
            pInfo->SetOldGinaDLL(pLink->pNext != nullptr ? NameOf(*pLink->pNext)
                                                         : pInfo->GetDefaultGinaDLL());
        }
    }
}
