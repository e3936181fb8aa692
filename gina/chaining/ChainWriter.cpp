#include "ChainWriter.h"

#include "MachineValue.h"
#include "WinlogonRegistry.h"

namespace {

constexpr WCHAR TXT_EMPTY[] = TEXT("Chaining list is empty");

/// Without this value Winlogon loads msgina.dll. The value is not read first: one that cannot be read has to
/// go too.
void DeleteGinaDLL() noexcept
{
    try {
        OpenMachineValue<CRegistryString>(LUM_GINA_ORIGIN, WINLOGON_KEY, WINLOGON_GINA_DLL, false, false)
            ->DeleteRegistryValue();
    } catch (...) {
        if (!ReportIf<CMessage>()) {
            CWarning(LUM_GINA_ORIGIN, ERR_UNHANDLED_EXCEPTION);
        }
    }
}

void WriteFirst(const WCHAR* szGinaDLL, CWinlogonRegistry& winlogonRegistry)
{
    if (szGinaDLL != nullptr) {
        winlogonRegistry.SetGinaDLL(szGinaDLL);
    } else {
        DeleteGinaDLL();
        CWarning(LUM_GINA_ORIGIN, TXT_EMPTY);
    }
}

} // namespace

void WriteChain(CKnownGinaList& knownGinas, const CGinaChain& chain, CWinlogonRegistry& winlogonRegistry)
{
    const CGinaNames ginas = NamesOf(chain);
    for (const CChainWrite& write : ListWrites(ginas)) {
        if (write.szGinaDLL == nullptr) {
            WriteFirst(write.szText, winlogonRegistry);
        } else if (CGinaChainingInfoObject* pInfo = FindGina(knownGinas, write.szGinaDLL); pInfo != nullptr) {
            pInfo->SetOldGinaDLL(write.szText != nullptr ? write.szText : pInfo->m_szDefaultGinaDLL);
        }
    }
}
