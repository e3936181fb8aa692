// What no other suite would notice of the calls. It runs on both targets, which keeps the native layer true
// to Windows; what the suites of the library and the tools go through is not repeated here.

#include <ctime>
#include <fstream>
#include <functional>
#include <string>

#include "TestMachine.h"

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
    LONG Set(HKEY hKey, const void* pData = "\0\0\0\0", DWORD dwType = REG_DWORD)
    {
        return RegSetValueExW(hKey, TEXT("v"), 0, dwType, static_cast<const BYTE*>(pData), 4);
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
        {"gone for its handle", [&] { return Set(m_hKey); }, ERROR_KEY_DELETED},
        {"the key itself", [&] { return Open(nullptr, KEY_SET_VALUE); }, ERROR_SUCCESS},
        {"write", [&] { return Set(m_hKey); }, ERROR_SUCCESS},
        {"without data", [&] { return Set(m_hKey, nullptr); }, ERROR_NOACCESS},
        {"read where one writes", [&] { return Query(); }, ERROR_ACCESS_DENIED},
        {"open to read", [&] { return Open(TEXT("")); }, ERROR_SUCCESS},
        {"read", [&] { return Query(); }, ERROR_SUCCESS},
        {"write where one reads", [&] { return Set(m_hKey); }, ERROR_ACCESS_DENIED},
        {"close", [&] { return RegCloseKey(m_hKey); }, ERROR_SUCCESS},
        {"close again", [&] { return RegCloseKey(m_hKey); }, ERROR_INVALID_HANDLE},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.call(), row.lExpected) << row.szWhat;
    }
}

TEST_F(PlatformRegistry, TerminatesTextsThatAreStoredWithoutEndIfThereIsRoom)
{
    const struct
    {
        DWORD dwType;
        DWORD cbBuffer;
        LONG lExpected;
        bool bTerminated;
    } rows[] = {{REG_SZ, 6, ERROR_SUCCESS, true},
                {REG_SZ, 5, ERROR_SUCCESS, false},
                {REG_SZ, 3, ERROR_MORE_DATA, false},
                {REG_BINARY, 6, ERROR_SUCCESS, false}};
    for (const auto& row : rows) {
        // A letter behind the text: Windows would store a terminator that it finds there.
        EXPECT_EQ(Set(m_hRoot, TEXT("abx"), row.dwType), ERROR_SUCCESS);
        BYTE buffer[] = "######";
        DWORD cbBuffer = row.cbBuffer;
        EXPECT_EQ(RegQueryValueExW(m_hRoot, TEXT("v"), nullptr, nullptr, buffer, &cbBuffer), row.lExpected);
        EXPECT_EQ(cbBuffer, 4u);
        EXPECT_EQ(buffer[4] == 0 && buffer[5] == 0, row.bTerminated) << row.dwType << ' ' << row.cbBuffer;
    }
}

TEST(Platform, TellsTheLocalDate)
{
    const std::time_t now = std::time(nullptr);
    const std::tm expected = *std::localtime(&now);
    SYSTEMTIME time = {};
    GetLocalTime(&time);
    EXPECT_EQ(time.wYear, expected.tm_year + 1900);
    EXPECT_EQ(time.wMonth, expected.tm_mon + 1);
    EXPECT_EQ(time.wDayOfWeek, expected.tm_wday);
}

TEST(Platform, TellsAPipesServerThatItsClientHasGone)
{
    constexpr WCHAR NAME[] = TEXT("\\\\.\\pipe\\LumPlatformTestPipe");
    const HANDLE hServer =
        CreateNamedPipeW(NAME, PIPE_ACCESS_DUPLEX | WRITE_OWNER, PIPE_NOWAIT, 1, 4096, 4096, 10, nullptr);
    const HANDLE hClient = CreateFileW(NAME, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD cbMoved = 0;
    EXPECT_FALSE(WriteFile(hClient, "a", 1, &cbMoved, nullptr)) << "it asked to read";
    for (const DWORD dwStatus : {ERROR_PIPE_CONNECTED, ERROR_NO_DATA}) {
        EXPECT_FALSE(ConnectNamedPipe(hServer, nullptr));
        EXPECT_EQ(GetLastError(), dwStatus);
        CloseHandle(hClient);
    }
    CloseHandle(hServer);
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
