#include "TestKey.h"

#include <string>

namespace {

using WideText = std::basic_string<WCHAR>;

/// The name of the first key below; empty when there is none.
WideText GetFirstKey(const WideText& key)
{
    HKEY hKey = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_ENUMERATE_SUB_KEYS, &hKey) != ERROR_SUCCESS) {
        return WideText();
    }
    WCHAR szName[256] = {};
    DWORD cchName = 256;
    RegEnumKeyExW(hKey, 0, szName, &cchName, nullptr, nullptr, nullptr, nullptr);
    RegCloseKey(hKey);
    return szName;
}

bool DeleteTree(const WideText& key)
{
    for (WideText name = GetFirstKey(key); !name.empty(); name = GetFirstKey(key)) {
        if (!DeleteTree(key + TEXT("\\") + name)) {
            return false;
        }
    }
    return RegDeleteKeyW(HKEY_LOCAL_MACHINE, key.c_str()) == ERROR_SUCCESS;
}

} // namespace

CTestKey::CTestKey(const WCHAR* szKey) : m_szKey(szKey)
{
    DeleteTree(m_szKey);
}

CTestKey::~CTestKey()
{
    DeleteTree(m_szKey);
}
