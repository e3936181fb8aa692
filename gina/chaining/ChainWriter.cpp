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
        if (!ReportIf<CMessage>()) {
            CWarning(LUM_GINA_ORIGIN, ERR_UNHANDLED_EXCEPTION);
        }
    }
}

} // namespace

void WriteChain(CKnownGinaList& knownGinas, const CGinaChain& chain, CWinlogonRegistry& winlogonRegistry)
{
    const auto writeFirst = [&](const WCHAR* szGinaDLL) {
        if (szGinaDLL != nullptr) {
            winlogonRegistry.SetGinaDLL(szGinaDLL);
        } else {
            DeleteGinaDLL();
            CWarning(LUM_GINA_ORIGIN, TXT_EMPTY);
        }
    };
    VisitChain(knownGinas, chain, writeFirst,
               [](CGinaChainingInfoObject& info, const WCHAR* szGinaDLL) { info.SetOldGinaDLL(szGinaDLL); });
}
