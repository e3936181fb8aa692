#include "Setting.h"

namespace {

/// The number of bytes read, 0 when the value is not there, of another type or longer than the buffer.
DWORD ReadValue(const WCHAR* szKey, const WCHAR* szValue, DWORD dwType, void* pData, DWORD cbData) noexcept
{
    HKEY hKey = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, KEY_QUERY_VALUE, &hKey) != ERROR_SUCCESS) {
        return 0;
    }
    DWORD dwActualType = REG_NONE;
    const LONG lResult =
        RegQueryValueExW(hKey, szValue, nullptr, &dwActualType, static_cast<BYTE*>(pData), &cbData);
    RegCloseKey(hKey);
    return lResult == ERROR_SUCCESS && dwActualType == dwType ? cbData : 0;
}

} // namespace

DWORD ReadNumber(const WCHAR* szKey, const WCHAR* szValue) noexcept
{
    DWORD dwNumber = 0;
    const DWORD cbRead = ReadValue(szKey, szValue, REG_DWORD, &dwNumber, sizeof(dwNumber));
    return cbRead == sizeof(dwNumber) ? dwNumber : 0;
}

void ReadText(const WCHAR* szKey, const WCHAR* szValue, WCHAR* szText, DWORD cchText) noexcept
{
    const DWORD cchRead = ReadValue(szKey, szValue, REG_SZ, szText, cchText * sizeof(WCHAR)) / sizeof(WCHAR);
    // The registry keeps what was written, with or without a terminator.
    if (cchRead < cchText) {
        szText[cchRead] = 0;
    } else if (szText[cchText - 1] != 0) {
        *szText = 0;
    }
}
