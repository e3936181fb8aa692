#include "RegistryValue.h"

#include "Exceptions.h"
#include "GuardedText.h"
#include "Operation.h"
#include "RequireArgument.h"

namespace {

constexpr WCHAR TXT_DEFAULT_CREATED[] =
    TEXT("Had to create registry value with default setting. Should be initialized");

} // namespace

CRegistryValue::CRegistryValue(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HKEY hKeyRoot,
                               const WCHAR* szSubKey, const WCHAR* szValueName, REGSAM samDesired,
                               bool bCreate, bool bOpenNow, bool bReadThrough, bool bWriteThrough,
                               DWORD dwOptions)
try : CRegistryKey(szAPPArg, szMTMArg, hKeyRoot, szSubKey, samDesired, bCreate, bOpenNow, dwOptions),
    m_bReadThrough(bReadThrough), m_bWriteThrough(bWriteThrough)
{
    const CConstructionTrace trace(*this, s_szClass);
    RequireArgument(*this, szValueName != nullptr && *szValueName != 0, TEXT("szValueName"));
    m_szValueName = CopyText(*this, szValueName, TEXT("m_szValueName"));
} catch (...) {
    FailConstruction<CRegistryValueInitException, CBadArgException, CUnableToOpenRegistryKeyException,
                     CUnableToCreateRegistryKeyException>({szAPPArg, szMTMArg});
}

CRegistryValue::~CRegistryValue()
{
    const CDestructionTrace trace(*this, s_szClass);
}

bool CRegistryValue::DeleteRegistryValue()
{
    const COperation op(*this, s_szClass, TEXT("DeleteRegistryValue"));
    return op.Run(
        PassOn<CUnableToDeleteRegistryValueException>(),
        [&] {
            const LONG lResult = RegDeleteValueW(m_hKey, m_szValueName);
            if (lResult != ERROR_SUCCESS) {
                throw CUnableToDeleteRegistryValueException(*this, m_szValueName, lResult);
            }
            return true;
        },
        FailureWarning::UnlessRaised);
}

bool CRegistryValue::Exists() const noexcept
{
    return TryQuery(nullptr, nullptr) != ERROR_FILE_NOT_FOUND;
}

LONG CRegistryValue::TryQuery(void* pData, DWORD* pcbData) const
{
    return RegQueryValueExW(m_hKey, m_szValueName, nullptr, nullptr, static_cast<BYTE*>(pData), pcbData);
}

void CRegistryValue::Store(DWORD dwType, const void* pData, DWORD cbData) const
{
    const LONG lResult =
        RegSetValueExW(m_hKey, m_szValueName, 0, dwType, static_cast<const BYTE*>(pData), cbData);
    if (lResult != ERROR_SUCCESS) {
        throw CUnableToWriteRegistryException(*this, m_szValueName, lResult);
    }
}

void CRegistryValue::ReportDefault() const
{
    CValueNameWarning(*this, TXT_DEFAULT_CREATED, m_szValueName);
}

void CRegistryValue::FailRead(LONG lError) const
{
    throw CUnableToReadRegistryException(*this, m_szValueName, lError);
}
