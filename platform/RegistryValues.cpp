#include <algorithm>
#include <cstring>

#include <windows.h>

#include "Call.h"
#include "KeyObject.h"

using namespace Native;

namespace {

bool IsText(DWORD dwType)
{
    return dwType == REG_SZ || dwType == REG_EXPAND_SZ || dwType == REG_MULTI_SZ;
}

/// NT terminates a text that was stored without a terminator, if there is room behind it.
void Terminate(const CRegistryData& data, BYTE* pData, DWORD cbData)
{
    const std::size_t cb = data.bytes.size();
    WCHAR chLast = 0;
    if (IsText(data.dwType) && cb >= sizeof(chLast) && cbData - cb >= sizeof(chLast)) {
        std::memcpy(&chLast, &data.bytes[cb - sizeof(chLast)], sizeof(chLast));
        if (chLast != 0) {
            std::memset(pData + cb, 0, sizeof(chLast));
        }
    }
}

/// Hands a value out; with pData null only its size.
LONG GiveValue(const CRegistryData& data, LPDWORD pdwType, BYTE* pData, LPDWORD pcbData)
{
    const auto cb = static_cast<DWORD>(data.bytes.size());
    const DWORD cbRoom = pcbData != nullptr ? *pcbData : 0;
    if (pdwType != nullptr) {
        *pdwType = data.dwType;
    }
    if (pcbData != nullptr) {
        *pcbData = cb;
    }
    if (pData == nullptr) {
        return ERROR_SUCCESS;
    }
    if (cb > cbRoom) {
        return ERROR_MORE_DATA;
    }
    std::copy(data.bytes.begin(), data.bytes.end(), pData);
    Terminate(data, pData, cbRoom);
    return ERROR_SUCCESS;
}

WideText TakeName(LPCWSTR szValue)
{
    return szValue != nullptr ? WideText(szValue) : WideText();
}

} // namespace

LSTATUS WINAPI RegQueryValueExW(HKEY hKey, LPCWSTR szValue, LPDWORD pdwReserved, LPDWORD pdwType,
                                LPBYTE pData, LPDWORD pcbData) noexcept
{
    return CodeCall(PlatformCall::RegQueryValueExW, szValue, [&]() -> LONG {
        if (pdwReserved != nullptr || (pData != nullptr && pcbData == nullptr)) {
            return ERROR_INVALID_PARAMETER;
        }
        const WideText name = TakeName(szValue);
        CRegistryData data;
        const LONG lResult =
            WithKey(hKey, KEY_QUERY_VALUE, [&](const std::shared_ptr<CTreeKey>& pKey) -> LONG {
                const auto found = pKey->values.find(name);
                if (found == pKey->values.end()) {
                    return ERROR_FILE_NOT_FOUND;
                }
                data = found->second;
                return ERROR_SUCCESS;
            });
        return lResult == ERROR_SUCCESS ? GiveValue(data, pdwType, pData, pcbData) : lResult;
    });
}

LSTATUS WINAPI RegSetValueExW(HKEY hKey, LPCWSTR szValue, DWORD, DWORD dwType, const BYTE* pData,
                              DWORD cbData) noexcept
{
    return CodeCall(PlatformCall::RegSetValueExW, szValue, [&]() -> LONG {
        const WideText name = TakeName(szValue);
        if (name.size() > MAX_VALUE_NAME) {
            return ERROR_INVALID_PARAMETER;
        }
        if (pData == nullptr && cbData != 0) {
            return ERROR_NOACCESS;
        }
        CRegistryData data = {dwType, {pData, pData + cbData}};
        return WithKey(hKey, KEY_SET_VALUE, [&](const std::shared_ptr<CTreeKey>& pKey) {
            // A name keeps the case that it was created with.
            pKey->values[name] = std::move(data);
            return ERROR_SUCCESS;
        });
    });
}

LSTATUS WINAPI RegDeleteValueW(HKEY hKey, LPCWSTR szValue) noexcept
{
    return CodeCall(PlatformCall::RegDeleteValueW, szValue, [&] {
        const WideText name = TakeName(szValue);
        return WithKey(hKey, KEY_SET_VALUE, [&](const std::shared_ptr<CTreeKey>& pKey) {
            return pKey->values.erase(name) != 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
        });
    });
}
