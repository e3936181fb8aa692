#include <algorithm>

#include <windows.h>

#include "Call.h"
#include "KeyObject.h"

using namespace Native;

namespace {

using Path = std::vector<WideText>;

/// Splits the path of a call. Null stands for the key itself. Returns ERROR_SUCCESS, or why it is not a path.
LONG TakePath(LPCWSTR szSubKey, Path& path)
{
    if (szSubKey == nullptr) {
        return ERROR_SUCCESS;
    }
    if (*szSubKey == '\\') {
        return ERROR_BAD_PATHNAME;
    }
    path = SplitPath(szSubKey);
    const bool bTooLong = std::any_of(path.begin(), path.end(),
                                      [](const WideText& name) { return name.size() > MAX_KEY_NAME; });
    return bTooLong ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
}

/// The key of a path, its last parts made where they are missing.
LONG MakeKeys(std::shared_ptr<CTreeKey> pKey, const Path& path, bool bVolatile,
              std::shared_ptr<CTreeKey>& pResult)
{
    for (const WideText& name : path) {
        if (pKey->bVolatile && !bVolatile && pKey->keys.count(name) == 0) {
            return ERROR_CHILD_MUST_BE_VOLATILE;
        }
        pKey = pKey->Make(name, bVolatile);
    }
    pResult = std::move(pKey);
    return ERROR_SUCCESS;
}

/// Opens a handle for the key that find(key, result) finds below hKey.
template <typename Find>
LONG OpenHandle(HKEY hKey, LPCWSTR szSubKey, REGSAM samDesired, PHKEY phResult, Find find)
{
    if (phResult == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    *phResult = nullptr;
    Path path;
    LONG lResult = TakePath(szSubKey, path);
    std::shared_ptr<CTreeKey> pResult;
    if (lResult == ERROR_SUCCESS) {
        lResult = WithKey(hKey, 0,
                          [&](const std::shared_ptr<CTreeKey>& pKey) { return find(pKey, path, pResult); });
    }
    if (lResult == ERROR_SUCCESS) {
        const HANDLE hResult = HandleTable::Add(std::make_shared<CKeyObject>(pResult, samDesired));
        *phResult = static_cast<HKEY>(hResult);
    }
    return lResult;
}

} // namespace

LSTATUS WINAPI RegOpenKeyExW(HKEY hKey, LPCWSTR szSubKey, DWORD, REGSAM samDesired, PHKEY phResult) noexcept
{
    return CodeCall(PlatformCall::RegOpenKeyExW, szSubKey, [&] {
        return OpenHandle(hKey, szSubKey, samDesired, phResult,
                          [](auto& pKey, const Path& path, auto& pResult) {
                              pResult = CTreeKey::Find(pKey, path);
                              return pResult != nullptr ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
                          });
    });
}

LSTATUS WINAPI RegCreateKeyExW(HKEY hKey, LPCWSTR szSubKey, DWORD dwReserved, LPWSTR, DWORD dwOptions,
                               REGSAM samDesired, SECURITY_ATTRIBUTES*, PHKEY phResult,
                               LPDWORD pdwDisposition) noexcept
{
    return CodeCall(PlatformCall::RegCreateKeyExW, szSubKey, [&]() -> LONG {
        if (dwReserved != 0) {
            return ERROR_INVALID_PARAMETER;
        }
        DWORD dwDisposition = REG_OPENED_EXISTING_KEY;
        const LONG lResult = OpenHandle(
            hKey, szSubKey, samDesired, phResult, [&](auto& pKey, const Path& path, auto& pResult) {
                dwDisposition =
                    CTreeKey::Find(pKey, path) != nullptr ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
                return MakeKeys(pKey, path, (dwOptions & REG_OPTION_VOLATILE) != 0, pResult);
            });
        if (lResult == ERROR_SUCCESS && pdwDisposition != nullptr) {
            *pdwDisposition = dwDisposition;
        }
        return lResult;
    });
}

LSTATUS WINAPI RegCloseKey(HKEY hKey) noexcept
{
    return CodeCall(PlatformCall::RegCloseKey, nullptr, [&] {
        const bool bClosed = hKey == HKEY_LOCAL_MACHINE || HandleTable::Close(hKey);
        return bClosed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
    });
}

LSTATUS WINAPI RegFlushKey(HKEY hKey) noexcept
{
    return CodeCall(PlatformCall::RegFlushKey, nullptr, [&]() -> LONG {
        if (CKeyObject::FromHandle(hKey) == nullptr) {
            return ERROR_INVALID_HANDLE;
        }
        return RegistryTree::g_flush ? RegistryTree::g_flush() : ERROR_SUCCESS;
    });
}

LSTATUS WINAPI RegDeleteKeyW(HKEY hKey, LPCWSTR szSubKey) noexcept
{
    return CodeCall(PlatformCall::RegDeleteKeyW, szSubKey, [&]() -> LONG {
        Path path;
        const LONG lResult = szSubKey == nullptr ? ERROR_INVALID_PARAMETER : TakePath(szSubKey, path);
        if (lResult != ERROR_SUCCESS || path.empty()) {
            return lResult != ERROR_SUCCESS ? lResult : ERROR_CALL_NOT_IMPLEMENTED;
        }
        return WithKey(hKey, 0, [&](const std::shared_ptr<CTreeKey>& pKey) -> LONG {
            const WideText name = std::move(path.back());
            path.pop_back();
            const std::shared_ptr<CTreeKey> pParent = CTreeKey::Find(pKey, path);
            if (pParent == nullptr || pParent->keys.count(name) == 0) {
                return ERROR_FILE_NOT_FOUND;
            }
            const auto found = pParent->keys.find(name);
            if (!found->second->keys.empty()) {
                return ERROR_ACCESS_DENIED;
            }
            pParent->Remove(found);
            return ERROR_SUCCESS;
        });
    });
}
