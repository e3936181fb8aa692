#include <algorithm>
#include <vector>

#include <windows.h>

#include "Call.h"
#include "Text.h"

using namespace Native;

namespace {

using Traits = std::char_traits<WCHAR>;

/// Code page 1252 from 0x80 to 0x9F; elsewhere its bytes are the characters of the same number.
constexpr WCHAR UPPER_CONTROLS[] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

/// The letters that take an accent in the code page, and the characters that they make with it.
struct CAccent
{
    WCHAR chAccent;
    LPCWSTR szLetters;
    LPCWSTR szComposed;
};

constexpr CAccent ACCENTS[] = {
    {0x0300, u"AEIOUaeiou", u"\u00C0\u00C8\u00CC\u00D2\u00D9\u00E0\u00E8\u00EC\u00F2\u00F9"},
    {0x0301, u"AEIOUYaeiouy", u"\u00C1\u00C9\u00CD\u00D3\u00DA\u00DD\u00E1\u00E9\u00ED\u00F3\u00FA\u00FD"},
    {0x0302, u"AEIOUaeiou", u"\u00C2\u00CA\u00CE\u00D4\u00DB\u00E2\u00EA\u00EE\u00F4\u00FB"},
    {0x0303, u"ANOano", u"\u00C3\u00D1\u00D5\u00E3\u00F1\u00F5"},
    {0x0308, u"AEIOUYaeiouy", u"\u00C4\u00CB\u00CF\u00D6\u00DC\u0178\u00E4\u00EB\u00EF\u00F6\u00FC\u00FF"},
    {0x030A, u"Aa", u"\u00C5\u00E5"},
    {0x030C, u"SZsz", u"\u0160\u017D\u0161\u017E"},
    {0x0327, u"Cc", u"\u00C7\u00E7"},
};

WCHAR FromAnsi(char ch)
{
    const auto byte = static_cast<BYTE>(ch);
    return byte >= 0x80 && byte <= 0x9F ? UPPER_CONTROLS[byte - 0x80] : byte;
}

/// False when the code page has no such character.
bool ToAnsi(WCHAR ch, char& chAnsi)
{
    const WCHAR* pUpper = std::find(std::begin(UPPER_CONTROLS), std::end(UPPER_CONTROLS), ch);
    const bool bUpper = pUpper != std::end(UPPER_CONTROLS);
    chAnsi = static_cast<char>(bUpper ? 0x80 + (pUpper - UPPER_CONTROLS) : ch);
    return bUpper || ch < 0x80 || (ch > 0x9F && ch <= 0xFF);
}

/// The character that a letter and an accent make; 0 for none.
WCHAR Compose(WCHAR chLetter, WCHAR chAccent)
{
    for (const CAccent& accent : ACCENTS) {
        const WCHAR* pLetter = Traits::find(accent.szLetters, Traits::length(accent.szLetters), chLetter);
        if (accent.chAccent == chAccent && pLetter != nullptr) {
            return accent.szComposed[pLetter - accent.szLetters];
        }
    }
    return 0;
}

WideText ComposeAll(const WideText& text)
{
    WideText composed;
    for (const WCHAR ch : text) {
        const WCHAR chJoined = composed.empty() ? WCHAR(0) : Compose(composed.back(), ch);
        if (chJoined != 0) {
            composed.back() = chJoined;
        } else {
            composed += ch;
        }
    }
    return composed;
}

/// The text that a caller gave: with its length, or with -1 and a terminator, which then counts as part of
/// it.
template <typename Char>
std::basic_string<Char> TakeText(const Char* szText, int cchText)
{
    Require(szText != nullptr && cchText != 0, ERROR_INVALID_PARAMETER);
    const std::size_t cch =
        cchText < 0 ? std::char_traits<Char>::length(szText) + 1 : static_cast<std::size_t>(cchText);
    return {szText, cch};
}

/// Copies the converted text to the caller. If the caller has no room at all, only returns its length.
template <typename Char>
int GiveText(const std::basic_string<Char>& text, Char* szDest, int cchDest)
{
    const int cchText = static_cast<int>(text.size());
    Require(cchDest >= 0 && (cchDest == 0 || szDest != nullptr), ERROR_INVALID_PARAMETER);
    if (cchDest != 0) {
        Require(cchDest >= cchText, ERROR_INSUFFICIENT_BUFFER);
        text.copy(szDest, text.size());
    }
    return cchText;
}

} // namespace

int WINAPI WideCharToMultiByte(UINT uCodePage, DWORD dwFlags, LPCWSTR szWide, int cchWide, LPSTR szAnsi,
                               int cbAnsi, LPCSTR szDefault, LPBOOL pbUsedDefault) noexcept
{
    return LastErrorCall(PlatformCall::WideCharToMultiByte, nullptr, 0, [&] {
        Require(uCodePage == CP_ACP, ERROR_INVALID_PARAMETER);
        WideText wide = TakeText(szWide, cchWide);
        if ((dwFlags & WC_COMPOSITECHECK) != 0) {
            wide = ComposeAll(wide);
        }
        std::string ansi(wide.size(), szDefault != nullptr ? *szDefault : '?');
        BOOL bUsedDefault = FALSE;
        for (std::size_t i = 0; i < wide.size(); ++i) {
            char ch = 0;
            if (ToAnsi(wide[i], ch)) {
                ansi[i] = ch;
            } else {
                bUsedDefault = TRUE;
            }
        }
        if (pbUsedDefault != nullptr) {
            *pbUsedDefault = bUsedDefault;
        }
        return GiveText(ansi, szAnsi, cbAnsi);
    });
}

int WINAPI MultiByteToWideChar(UINT uCodePage, DWORD, LPCSTR szAnsi, int cbAnsi, LPWSTR szWide,
                               int cchWide) noexcept
{
    return LastErrorCall(PlatformCall::MultiByteToWideChar, nullptr, 0, [&] {
        Require(uCodePage == CP_ACP, ERROR_INVALID_PARAMETER);
        WideText wide;
        for (const char ch : TakeText(szAnsi, cbAnsi)) {
            wide += FromAnsi(ch);
        }
        return GiveText(wide, szWide, cchWide);
    });
}
