#include <cstdlib>

#include <windows.h>

namespace {

constexpr WCHAR ROOT[] = L"Software\\ORX\\ChainingTests";

/// These tests make and delete Winlogon's own key. From here on HKEY_LOCAL_MACHINE is a key of the user's for
/// this process; without that no test may run.
bool UsePrivateRegistry()
{
    HKEY hKey = nullptr;
    const bool bPrivate = RegCreateKeyExW(HKEY_CURRENT_USER, ROOT, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                          &hKey, nullptr) == ERROR_SUCCESS &&
                          RegOverridePredefKey(HKEY_LOCAL_MACHINE, hKey) == ERROR_SUCCESS;
    RegCloseKey(hKey);
    if (!bPrivate) {
        std::abort();
    }
    return bPrivate;
}

const bool g_bPrivate = UsePrivateRegistry();

} // namespace
