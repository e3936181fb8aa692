// What no other suite would notice of the calls. It runs on both targets, which keeps the native layer true
// to Windows; what the suites of the library and the tools go through is not repeated here.

#include <cstring>
#include <fstream>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

using WideText = std::basic_string<WCHAR>;

TEST(Platform, ConvertsWhatTheCodePageHasAndReplacesTheRest)
{
    const struct
    {
        WideText wide;
        DWORD dwFlags;
        const char* szDefault;
        std::string ansi; ///< of a buffer of five characters; empty when that is too small
        BOOL bUsedDefault;
    } rows[] = {
        {TEXT("plain"), 0, nullptr, "plain", FALSE},
        {TEXT("longer"), 0, nullptr, "", FALSE},
        {TEXT("\u00E9\u20AC\u017D"), 0, nullptr, "\xE9\x80\x8E", FALSE},
        {TEXT("a\u4E2Db"), 0, nullptr, "a?b", TRUE},
        {TEXT("a\u4E2Db"), WC_COMPOSITECHECK | WC_DEFAULTCHAR, "#", "a#b", TRUE},
        {TEXT("e\u0301U\u0308s\u030C"), WC_COMPOSITECHECK | WC_DEFAULTCHAR, nullptr, "\xE9\xDC\x9A", FALSE},
    };
    for (const auto& row : rows) {
        char szAnsi[5];
        BOOL bUsedDefault = FALSE;
        const int cb =
            WideCharToMultiByte(CP_ACP, row.dwFlags, row.wide.data(), static_cast<int>(row.wide.size()),
                                szAnsi, 5, row.szDefault, &bUsedDefault);
        EXPECT_EQ(std::string(szAnsi, static_cast<std::size_t>(cb)), row.ansi);
        EXPECT_EQ(bUsedDefault, row.bUsedDefault) << row.ansi;
    }
    for (int nByte = 0; nByte < 256; ++nByte) {
        const char ch = static_cast<char>(nByte);
        WCHAR chWide = 0;
        char chBack = 0;
        EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, &ch, 1, &chWide, 1), 1);
        WideCharToMultiByte(CP_ACP, 0, &chWide, 1, &chBack, 1, nullptr, nullptr);
        EXPECT_EQ(chBack, ch);
    }
}

/// A key of HKEY_LOCAL_MACHINE for the test alone.
class PlatformRegistry : public testing::Test
{
protected:
    PlatformRegistry()
    {
        DeleteKeys();
        EXPECT_EQ(Make(TEXT(""), 0, &m_hRoot), ERROR_SUCCESS);
    }
    ~PlatformRegistry() override
    {
        RegCloseKey(m_hRoot);
        DeleteKeys();
    }

    static WideText PathOf(const WideText& below) { return TEXT("SOFTWARE\\ORX\\PlatformTest") + below; }
    static void DeleteKeys()
    {
        for (const WCHAR* szKey : {TEXT("\\V\\V"), TEXT("\\V"), TEXT("\\K\\C"), TEXT("\\K"), TEXT("")}) {
            RegDeleteKeyW(HKEY_LOCAL_MACHINE, PathOf(szKey).c_str());
        }
    }

    LONG Make(const WCHAR* szBelow, DWORD dwOptions = 0, HKEY* phKey = nullptr)
    {
        HKEY hKey = nullptr;
        const LONG lResult =
            RegCreateKeyExW(HKEY_LOCAL_MACHINE, PathOf(szBelow).c_str(), 0, nullptr, dwOptions,
                            KEY_ALL_ACCESS, nullptr, phKey != nullptr ? phKey : &hKey, nullptr);
        RegCloseKey(hKey);
        return lResult;
    }
    LONG Open(const WCHAR* szKey, REGSAM samDesired = KEY_READ, HKEY* phKey = nullptr)
    {
        HKEY hKey = nullptr;
        const LONG lResult = RegOpenKeyExW(m_hRoot, szKey, 0, samDesired, phKey != nullptr ? phKey : &hKey);
        RegCloseKey(hKey);
        return lResult;
    }
    static LONG Set(HKEY hKey, const void* pData = "\0\0\0\0", DWORD dwType = REG_DWORD)
    {
        return RegSetValueExW(hKey, TEXT("v"), 0, dwType, static_cast<const BYTE*>(pData), 4);
    }
    static LONG Query(HKEY hKey)
    {
        return RegQueryValueExW(hKey, TEXT("V"), nullptr, nullptr, nullptr, nullptr);
    }

    HKEY m_hRoot = nullptr;
};

TEST_F(PlatformRegistry, GivesTheErrorsOfWindows)
{
    HKEY hRead = nullptr;
    HKEY hWrite = nullptr;
    HKEY hKey = nullptr;
    const struct
    {
        const char* szWhat;
        std::function<LONG()> call;
        LONG lExpected;
    } rows[] = {
        {"a volatile key", [&] { return Make(TEXT("\\V"), REG_OPTION_VOLATILE); }, ERROR_SUCCESS},
        {"a lasting one below", [&] { return Make(TEXT("\\V\\L")); }, ERROR_CHILD_MUST_BE_VOLATILE},
        {"was not made", [&] { return Open(TEXT("V\\L")); }, ERROR_FILE_NOT_FOUND},
        {"a volatile one below", [&] { return Make(TEXT("\\V\\V"), REG_OPTION_VOLATILE); }, ERROR_SUCCESS},
        {"is opened as lasting", [&] { return Make(TEXT("\\V\\V")); }, ERROR_SUCCESS},
        {"two levels", [&] { return Make(TEXT("\\K\\C"), 0, &hKey); }, ERROR_SUCCESS},
        {"in another case", [&] { return Open(TEXT("k\\c")); }, ERROR_SUCCESS},
        {"the key itself", [&] { return Open(nullptr); }, ERROR_SUCCESS},
        {"two separators", [&] { return Open(TEXT("K\\\\C\\")); }, ERROR_SUCCESS},
        {"a separator first", [&] { return Open(TEXT("\\K")); }, ERROR_BAD_PATHNAME},
        {"with a child", [&] { return RegDeleteKeyW(m_hRoot, TEXT("K")); }, ERROR_ACCESS_DENIED},
        {"the child", [&] { return RegDeleteKeyW(m_hRoot, TEXT("K\\C")); }, ERROR_SUCCESS},
        {"is gone for its handle", [&] { return Set(hKey); }, ERROR_KEY_DELETED},
        {"which is closed", [&] { return RegCloseKey(hKey); }, ERROR_SUCCESS},
        {"and closed again", [&] { return RegCloseKey(hKey); }, ERROR_INVALID_HANDLE},
        {"open to read", [&] { return Open(TEXT(""), KEY_READ, &hRead); }, ERROR_SUCCESS},
        {"open to write", [&] { return Open(TEXT(""), KEY_SET_VALUE, &hWrite); }, ERROR_SUCCESS},
        {"write", [&] { return Set(hWrite); }, ERROR_SUCCESS},
        {"read", [&] { return Query(hRead); }, ERROR_SUCCESS},
        {"write where one reads", [&] { return Set(hRead); }, ERROR_ACCESS_DENIED},
        {"read where one writes", [&] { return Query(hWrite); }, ERROR_ACCESS_DENIED},
        {"without data", [&] { return Set(hWrite, nullptr); }, ERROR_NOACCESS},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.call(), row.lExpected) << row.szWhat;
    }
    RegCloseKey(hRead);
    RegCloseKey(hWrite);
}

TEST_F(PlatformRegistry, TerminatesTextsThatAreStoredWithoutEndIfThereIsRoom)
{
    const struct
    {
        DWORD dwType;
        DWORD cbBuffer;
        LONG lExpected;
        bool bTerminated;
    } rows[] = {{REG_SZ, 6, ERROR_SUCCESS, true},      {REG_SZ, 5, ERROR_SUCCESS, false},
                {REG_SZ, 4, ERROR_SUCCESS, false},     {REG_SZ, 3, ERROR_MORE_DATA, false},
                {REG_BINARY, 6, ERROR_SUCCESS, false}, {REG_MULTI_SZ, 8, ERROR_SUCCESS, true}};
    for (const auto& row : rows) {
        // A letter behind the text: Windows would store a terminator that it finds there.
        EXPECT_EQ(Set(m_hRoot, TEXT("abx"), row.dwType), ERROR_SUCCESS);
        BYTE buffer[8];
        std::memset(buffer, 0xEE, sizeof(buffer));
        DWORD cbBuffer = row.cbBuffer;
        EXPECT_EQ(RegQueryValueExW(m_hRoot, TEXT("v"), nullptr, nullptr, buffer, &cbBuffer), row.lExpected);
        EXPECT_EQ(cbBuffer, 4u);
        EXPECT_EQ(buffer[4] == 0 && buffer[5] == 0, row.bTerminated) << row.dwType << ' ' << row.cbBuffer;
        EXPECT_EQ(buffer[6], 0xEE);
    }
}

TEST(Platform, TellsWhyADllCannotBeLoaded)
{
    std::ofstream("garbage.dll") << "this is no library, however long it may be\n";
    std::ofstream("empty.dll").flush();
    const struct
    {
        const WCHAR* szFile;
        DWORD dwError;
    } rows[] = {
        {TEXT("no\\such\\library.dll"), ERROR_MOD_NOT_FOUND},
        {TEXT(".\\garbage."), ERROR_MOD_NOT_FOUND}, // a dot at the end means no extension
        {TEXT(".\\garbage"), ERROR_BAD_EXE_FORMAT},
        {TEXT("empty.dll"), ERROR_BAD_EXE_FORMAT},
        {TEXT("."), ERROR_ACCESS_DENIED},
        {TEXT(""), ERROR_MOD_NOT_FOUND},
        {nullptr, ERROR_INVALID_PARAMETER},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(LoadLibraryW(row.szFile), nullptr);
        EXPECT_EQ(GetLastError(), row.dwError) << (&row - rows);
    }
    const HMODULE hModule = LoadLibraryW(TEXT("pass_plugin.dll"));
    EXPECT_EQ(LoadLibraryW(TEXT("PASS_plugin")), hModule) << "neither case nor extension matters";
    for (const char* szName : {"lumnegotiate", "malloc"}) {
        EXPECT_EQ(GetProcAddress(hModule, szName), nullptr) << szName;
        EXPECT_EQ(GetLastError(), DWORD(ERROR_PROC_NOT_FOUND)) << szName;
    }
    EXPECT_TRUE(FreeLibrary(hModule));
    EXPECT_TRUE(FreeLibrary(hModule));
    EXPECT_FALSE(FreeLibrary(hModule));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_MOD_NOT_FOUND));
}

} // namespace
