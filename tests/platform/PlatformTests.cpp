// What no other suite would notice of the calls. It runs on both targets, which keeps the native layer true
// to Windows; what the suites of the library and the tools go through is not repeated here.

#include <functional>
#include <string>

#include "TestMachine.h"

namespace {

using WideText = std::basic_string<WCHAR>;

class PlatformRegistry : public CTestMachine
{
protected:
    PlatformRegistry() { EXPECT_EQ(Make(TEXT("SOFTWARE\\ORX\\Test"), 0, &m_hRoot), ERROR_SUCCESS); }
    ~PlatformRegistry() override { RegCloseKey(m_hRoot); }

    static LONG Make(const WCHAR* szKey, DWORD dwOptions, HKEY* phKey)
    {
        return RegCreateKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, nullptr, dwOptions, KEY_ALL_ACCESS, nullptr,
                               phKey, nullptr);
    }
    LONG Make(const WCHAR* szBelow, DWORD dwOptions = 0)
    {
        RegCloseKey(m_hKey);
        return Make((WideText(TEXT("SOFTWARE\\ORX\\Test\\")) + szBelow).c_str(), dwOptions, &m_hKey);
    }
    LONG Open(const WCHAR* szKey, REGSAM samDesired = KEY_READ)
    {
        RegCloseKey(m_hKey);
        return RegOpenKeyExW(m_hRoot, szKey, 0, samDesired, &m_hKey);
    }
    LONG Set(const char* pData = "\0\0\0\0")
    {
        return RegSetValueExW(m_hKey, TEXT("v"), 0, REG_DWORD, reinterpret_cast<const BYTE*>(pData), 4);
    }
    LONG Query() { return RegQueryValueExW(m_hKey, TEXT("V"), nullptr, nullptr, nullptr, nullptr); }

    HKEY m_hRoot = nullptr;
    HKEY m_hKey = nullptr; ///< the one made or opened last
};

TEST_F(PlatformRegistry, GivesTheErrorsOfWindows)
{
    const struct
    {
        const char* szWhat;
        std::function<LONG()> call;
        LONG lExpected;
    } rows[] = {
        {"a volatile key", [&] { return Make(TEXT("Volatile"), REG_OPTION_VOLATILE); }, ERROR_SUCCESS},
        {"a lasting one below", [&] { return Make(TEXT("Volatile\\L")); }, ERROR_CHILD_MUST_BE_VOLATILE},
        {"is opened as lasting", [&] { return Make(TEXT("Volatile")); }, ERROR_SUCCESS},
        {"in another case", [&] { return Open(TEXT("volatile\\")); }, ERROR_SUCCESS},
        {"a separator first", [&] { return Open(TEXT("\\Volatile")); }, ERROR_BAD_PATHNAME},
        {"two levels", [&] { return Make(TEXT("K\\C")); }, ERROR_SUCCESS},
        {"with a child", [&] { return RegDeleteKeyW(m_hRoot, TEXT("K")); }, ERROR_ACCESS_DENIED},
        {"the child", [&] { return RegDeleteKeyW(m_hRoot, TEXT("K\\C")); }, ERROR_SUCCESS},
        {"the rest", [&] { return RegDeleteKeyW(m_hRoot, TEXT("K")); }, ERROR_SUCCESS},
        {"gone for its handle", [&] { return Set(); }, ERROR_KEY_DELETED},
        {"the key itself", [&] { return Open(nullptr, KEY_SET_VALUE); }, ERROR_SUCCESS},
        {"write", [&] { return Set(); }, ERROR_SUCCESS},
        {"without data", [&] { return Set(nullptr); }, ERROR_NOACCESS},
        {"read where one writes", [&] { return Query(); }, ERROR_ACCESS_DENIED},
        {"open to read", [&] { return Open(TEXT("")); }, ERROR_SUCCESS},
        {"read", [&] { return Query(); }, ERROR_SUCCESS},
        {"write where one reads", [&] { return Set(); }, ERROR_ACCESS_DENIED},
        {"close", [&] { return RegCloseKey(m_hKey); }, ERROR_SUCCESS},
        {"close again", [&] { return RegCloseKey(m_hKey); }, ERROR_INVALID_HANDLE},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.call(), row.lExpected) << row.szWhat;
    }
}

} // namespace
