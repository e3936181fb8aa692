#include <string>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

using WideText = std::basic_string<WCHAR>;

int ToAnsi(const WideText& text, DWORD dwFlags, std::string& ansi, const char* szDefault, BOOL* pbUsedDefault)
{
    char szAnsi[64] = {};
    const int cb = WideCharToMultiByte(CP_ACP, dwFlags, text.data(), static_cast<int>(text.size()), szAnsi,
                                       64, szDefault, pbUsedDefault);
    ansi.assign(szAnsi, static_cast<std::size_t>(cb));
    return cb;
}

TEST(AnsiText, ConvertsWhatTheCodePageHasAndReplacesTheRest)
{
    const struct
    {
        WideText wide;
        DWORD dwFlags;
        const char* szDefault;
        std::string ansi;
        BOOL bUsedDefault;
    } rows[] = {
        {TEXT("plain"), 0, nullptr, "plain", FALSE},
        {TEXT("\u00E9\u20AC\u017D"), 0, nullptr, "\xE9\x80\x8E", FALSE},
        {TEXT("a\u4E2Db"), 0, nullptr, "a?b", TRUE},
        {TEXT("a\u4E2Db"), WC_COMPOSITECHECK | WC_DEFAULTCHAR, nullptr, "a?b", TRUE},
        {TEXT("a\u4E2Db"), 0, "#", "a#b", TRUE},
        {TEXT("e\u0301U\u0308s\u030C"), WC_COMPOSITECHECK | WC_DEFAULTCHAR, nullptr, "\xE9\xDC\x9A", FALSE},
        {WideText(TEXT("a\0b"), 3), 0, nullptr, std::string("a\0b", 3), FALSE},
    };
    for (const auto& row : rows) {
        std::string ansi;
        BOOL bUsedDefault = 2;
        ToAnsi(row.wide, row.dwFlags, ansi, row.szDefault, &bUsedDefault);
        EXPECT_EQ(ansi, row.ansi);
        EXPECT_EQ(bUsedDefault, row.bUsedDefault) << row.ansi;
    }
}

TEST(AnsiText, ReadsEveryByteAndWritesItBack)
{
    for (int nByte = 0; nByte < 256; ++nByte) {
        const char ch = static_cast<char>(nByte);
        WCHAR chWide = 0;
        ASSERT_EQ(MultiByteToWideChar(CP_ACP, 0, &ch, 1, &chWide, 1), 1);
        std::string ansi;
        ToAnsi(WideText(1, chWide), 0, ansi, nullptr, nullptr);
        EXPECT_EQ(ansi, std::string(1, ch));
    }
    WCHAR szWide[4] = {};
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "\x80\x9F", -1, szWide, 4), 3);
    EXPECT_EQ(WideText(szWide), TEXT("\u20AC\u0178"));
}

TEST(AnsiText, MeasuresAndRefuses)
{
    const WCHAR szWide[] = TEXT("abc");
    const struct
    {
        const char* szWhat;
        const WCHAR* szWide;
        int cchWide;
        int cbAnsi;
        int nExpected;
        DWORD dwError;
    } rows[] = {
        {"counts", szWide, 3, 0, 3, ERROR_SUCCESS},
        {"counts with terminator", szWide, -1, 0, 4, ERROR_SUCCESS},
        {"converts with terminator", szWide, -1, 4, 4, ERROR_SUCCESS},
        {"no room for the terminator", szWide, -1, 3, 0, ERROR_INSUFFICIENT_BUFFER},
        {"no characters", szWide, 0, 4, 0, ERROR_INVALID_PARAMETER},
        {"no text", nullptr, 1, 4, 0, ERROR_INVALID_PARAMETER},
    };
    for (const auto& row : rows) {
        char szAnsi[4] = {};
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(
            WideCharToMultiByte(CP_ACP, 0, row.szWide, row.cchWide, szAnsi, row.cbAnsi, nullptr, nullptr),
            row.nExpected)
            << row.szWhat;
        EXPECT_EQ(GetLastError(), row.dwError) << row.szWhat;
    }
    SetLastError(ERROR_SUCCESS);
    WCHAR chWide = 0;
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 3, &chWide, 1), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));
}

} // namespace
