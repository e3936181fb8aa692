#include "ChainWriter.h"

#include "MachineValue.h"
#include "WinlogonRegistry.h"

namespace {

constexpr WCHAR TXT_EMPTY[] = TEXT("Chaining list is empty");

/// Winlogon falls back to its own GINA when there is no such value. It is not read first: one that cannot be
/// read has to go, too.
void DeleteGinaDLL()
{
    OpenMachineValue<CRegistryString>(LUM_GINA_ORIGIN, WINLOGON_KEY, WINLOGON_GINA_DLL, false, false)
        ->DeleteRegistryValue();
}

} // namespace

void WriteChain(CKnownGinaList& knownGinas, const CGinaChain& chain, CWinlogonRegistry& winlogonRegistry)
{
    const auto writeFirst = [&](const WCHAR* szGinaDLL) {
        if (szGinaDLL != nullptr) {
            winlogonRegistry.SetGinaDLL(szGinaDLL);
        } else {
            CWarning(LUM_GINA_ORIGIN, TXT_EMPTY);
            DeleteGinaDLL();
        }
    };
    VisitChain(knownGinas, chain, writeFirst,
               [](CGinaChainingInfoObject& info, const WCHAR* szGinaDLL) { info.SetOldGinaDLL(szGinaDLL); });
}
