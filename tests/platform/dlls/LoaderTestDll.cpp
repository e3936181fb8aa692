// A DLL that does in its DllMain what the registry tells it to, and counts the calls there.

#include <windows.h>

#include "LoaderTestDll.h"

namespace {

HINSTANCE g_hInstance;

HKEY OpenOwnKey()
{
    HKEY hKey = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, LOADER_TEST_KEY TEXT("\\") LOADER_TEST_DLL, 0, KEY_ALL_ACCESS, &hKey);
    return hKey;
}

DWORD GetNumber(HKEY hKey, const WCHAR* szValue)
{
    DWORD dwNumber = 0;
    DWORD cbNumber = sizeof(dwNumber);
    RegQueryValueExW(hKey, szValue, nullptr, nullptr, reinterpret_cast<BYTE*>(&dwNumber), &cbNumber);
    return dwNumber;
}

void SetNumber(HKEY hKey, const WCHAR* szValue, DWORD dwNumber)
{
    RegSetValueExW(hKey, szValue, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&dwNumber), sizeof(dwNumber));
}

/// Loads what it is told to, if anything.
void LoadInside(HKEY hKey)
{
    WCHAR szFile[MAX_PATH + 1] = {};
    DWORD cbFile = MAX_PATH * sizeof(WCHAR);
    if (RegQueryValueExW(hKey, TEXT("Load"), nullptr, nullptr, reinterpret_cast<BYTE*>(szFile), &cbFile) ==
        ERROR_SUCCESS)
    {
        SetNumber(hKey, TEXT("Loaded"), LoadLibraryW(szFile) != nullptr);
    }
}

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID)
{
    if (dwReason != DLL_PROCESS_ATTACH && dwReason != DLL_PROCESS_DETACH) {
        return TRUE;
    }
    const HKEY hKey = OpenOwnKey();
    const WCHAR* szCount = dwReason == DLL_PROCESS_ATTACH ? TEXT("Attached") : TEXT("Detached");
    SetNumber(hKey, szCount, GetNumber(hKey, szCount) + 1);
    const DWORD dwBehaviour = GetNumber(hKey, TEXT("Behaviour"));
    if (dwReason == DLL_PROCESS_ATTACH) {
        g_hInstance = hInstance;
        LoadInside(hKey);
    }
    RegCloseKey(hKey);
    if (dwBehaviour == LOADER_TEST_FAULT) {
        // Not null itself, a write to which a sanitizer would report before it happens.
        int* volatile pNowhere = reinterpret_cast<int*>(16);
        *pNowhere = 0;
    }
    return dwBehaviour != LOADER_TEST_REFUSE;
}

extern "C" HINSTANCE WINAPI GetOwnInstance()
{
    return g_hInstance;
}
