#include "WinlogonRegistry.h"

#include <type_traits>

#include "CallLocked.h"
#include "Exceptions.h"
#include "MachineValue.h"
#include "Operation.h"

namespace {

constexpr WCHAR TXT_KEY_NOT_LOADED[] = TEXT("Winlogon key could not be loaded");

/// Makes a value object, or reports why it stays null.
template <typename Value>
void LoadValue(const CMessageOrigin& origin, COwned<Value>& pValue, const WCHAR* szValueName) noexcept
{
    try {
        pValue = OpenMachineValue<Value>(origin, WINLOGON_KEY, szValueName, false, false);
        if (!pValue->ReadRegistry()) {
            throw CUnableToReadRegistryException(origin, szValueName, ERROR_READ_FAULT);
        }
        if constexpr (std::is_same_v<Value, CRegistryString>) {
            // Whoever wants it reads the registry.
            if (EqualNames(szValueName, TEXT("DefaultPassword"))) {
                pValue->Forget();
            }
        }
    } catch (...) {
        // Most machines lack most of these values. Their objects stay, and read what is written later.
        if (pValue == nullptr || !ReportIf<CUnableToReadRegistryException>() || pValue->Exists()) {
            pValue.Reset();
            CKeyWarning(origin, TXT_KEY_NOT_LOADED, szValueName);
        }
    }
}

} // namespace

CWinlogonRegistry::CWinlogonRegistry(const WCHAR* szAPPArg, const WCHAR* szMTMArg) noexcept
    : CGlobalObject(szAPPArg, szMTMArg)
{
    const CConstructionTrace trace(*this, s_szClass);
#define WINLOGON_LOAD(NAME, KIND) LoadValue(*this, m_p##NAME, TEXT(#NAME));
    WINLOGON_VALUES(WINLOGON_LOAD)
#undef WINLOGON_LOAD
}

CWinlogonRegistry::~CWinlogonRegistry()
{
    const CDestructionTrace trace(*this, s_szClass);
#define WINLOGON_DELETE(NAME, KIND) DeleteVariable(*this, TEXT("m_p" #NAME), [this] { m_p##NAME.Reset(); });
    WINLOGON_VALUES(WINLOGON_DELETE)
#undef WINLOGON_DELETE
}

bool CWinlogonRegistry::GetGinaDLL(WCHAR* szDest, DWORD cchDest, bool bRefresh) noexcept
{
    const COperation op(*this, s_szClass, TEXT("GetGinaDLL"));
    const auto body = [&] {
        return RequireValue(*this, m_pGinaDLL, WINLOGON_GINA_DLL)
            .GetRegistryString(szDest, cchDest, bRefresh);
    };
    return op.Run(Absorb<CUnableToReadRegistryException>(), [&] { return CallLocked(m_GinaDLLLock, body); });
}

bool CWinlogonRegistry::SetGinaDLL(const WCHAR* szValue) noexcept
{
    const COperation op(*this, s_szClass, TEXT("SetGinaDLL"));
    const auto body = [&] {
        if (szValue == nullptr) {
            // No value is made for a null name, and an existing one refuses it below.
            op.Warn(ERR_PUSHING_NULL);
        } else if (m_pGinaDLL == nullptr) {
            MakeGinaDLL();
        }
        try {
            if (m_pGinaDLL != nullptr) {
                m_pGinaDLL->SetRegistryString(szValue, true);
            }
        } catch (...) {
            // The value has reported why. A caller that writes a chain goes on all the same.
            Absorb<CMessage>()(op);
        }
        return true;
    };
    return op.Run(Absorb<CUnableToWriteRegistryException>(), [&] { return CallLocked(m_GinaDLLLock, body); });
}

void CWinlogonRegistry::MakeGinaDLL()
{
    try {
        m_pGinaDLL = MakeMachineValue<CRegistryString>(*this, WINLOGON_KEY, WINLOGON_GINA_DLL);
    } catch (...) {
        throw CUnableToWriteRegistryException(*this, WINLOGON_GINA_DLL, NO_VALUE_OBJECT);
    }
}
