#include "KeptKey.h"

#include "GinaNames.h"

constinit CKeptKey g_OwnKey(LUM_GINA_MTM);

CKeptKey::~CKeptKey()
{
    const HKEY hKey = m_hKey.exchange(nullptr);
    if (hKey != nullptr) {
        RegCloseKey(hKey);
    }
}

HKEY CKeptKey::Open() const noexcept
{
    HKEY hKey = nullptr;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, m_szKey, 0, KEY_READ, &hKey) == ERROR_SUCCESS ? hKey : nullptr;
}

bool CKeptKey::Query(const WCHAR* szValue, void* pData, DWORD* pcbData, DWORD* pdwType) noexcept
{
    const DWORD cbData = *pcbData;
    const auto query = [=](HKEY hKey) {
        *pcbData = cbData;
        return RegQueryValueExW(hKey, szValue, nullptr, pdwType, static_cast<BYTE*>(pData), pcbData);
    };
    HKEY hKey = m_hKey.exchange(nullptr);
    LONG lResult = ERROR_INVALID_HANDLE;
    if (hKey != nullptr) {
        lResult = query(hKey);
        if (lResult != ERROR_SUCCESS && lResult != ERROR_FILE_NOT_FOUND) {
            RegCloseKey(hKey);
            hKey = nullptr;
        }
    }
    if (hKey == nullptr) {
        hKey = Open();
        lResult = hKey != nullptr ? query(hKey) : ERROR_INVALID_HANDLE;
    }
    HKEY hNone = nullptr;
    if (hKey != nullptr && !m_hKey.compare_exchange_strong(hNone, hKey)) {
        RegCloseKey(hKey);
    }
    return lResult == ERROR_SUCCESS;
}
