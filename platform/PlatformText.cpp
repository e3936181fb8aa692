#include "PlatformText.h"

namespace Platform {
namespace {

using Traits = std::char_traits<WCHAR>;

WCHAR FoldCase(WCHAR ch) noexcept
{
    const bool bLower = (ch >= 'a' && ch <= 'z') || (ch >= 0xE0 && ch <= 0xFE && ch != 0xF7);
    return bLower ? static_cast<WCHAR>(ch - 0x20) : ch;
}

int Compare(LPCWSTR szLeft, std::size_t cchLeft, LPCWSTR szRight, std::size_t cchRight) noexcept
{
    for (std::size_t i = 0; i < cchLeft && i < cchRight; ++i) {
        const int nDifference = FoldCase(szLeft[i]) - FoldCase(szRight[i]);
        if (nDifference != 0) {
            return nDifference;
        }
    }
    return cchLeft < cchRight ? -1 : cchLeft > cchRight;
}

constexpr char32_t REPLACEMENT = 0xFFFD;

bool IsHighSurrogate(char32_t ch)
{
    return ch >= 0xD800 && ch < 0xDC00;
}

bool IsLowSurrogate(char32_t ch)
{
    return ch >= 0xDC00 && ch < 0xE000;
}

/// Takes the character at nPosition, and moves on behind it.
char32_t TakeCharacter(const WideText& text, std::size_t& nPosition)
{
    const char32_t ch = text[nPosition++];
    if (IsHighSurrogate(ch) && nPosition < text.size() && IsLowSurrogate(text[nPosition])) {
        return 0x10000 + ((ch - 0xD800) << 10) + (text[nPosition++] - 0xDC00);
    }
    return IsHighSurrogate(ch) || IsLowSurrogate(ch) ? REPLACEMENT : ch;
}

void AppendUtf8(std::string& bytes, char32_t ch)
{
    if (ch < 0x80) {
        bytes += static_cast<char>(ch);
        return;
    }
    const int nFollowing = ch < 0x800 ? 1 : ch < 0x10000 ? 2 : 3;
    bytes += static_cast<char>((0xF00 >> (nFollowing + 1) & 0xFF) | ch >> 6 * nFollowing);
    for (int i = nFollowing - 1; i >= 0; --i) {
        bytes += static_cast<char>(0x80 | (ch >> 6 * i & 0x3F));
    }
}

void AppendWide(WideText& text, char32_t ch)
{
    if (ch < 0x10000) {
        text += static_cast<WCHAR>(ch);
        return;
    }
    text += static_cast<WCHAR>(0xD800 + ((ch - 0x10000) >> 10));
    text += static_cast<WCHAR>(0xDC00 + (ch & 0x3FF));
}

/// How many bytes follow the first one of a character; -1 when none can begin with it.
int CountFollowing(unsigned char first)
{
    return first < 0x80 ? 0 : first < 0xC2 ? -1 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : first < 0xF5 ? 3 : -1;
}

/// Takes the character at nPosition and moves on behind it; false when there is none.
bool TakeUtf8(const std::string& bytes, std::size_t& nPosition, char32_t& ch)
{
    static constexpr char32_t LOWEST[] = {0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<unsigned char>(bytes[nPosition++]);
    const int nFollowing = CountFollowing(first);
    if (nFollowing < 0) {
        return false;
    }
    ch = nFollowing == 0 ? first : first & (0x3F >> nFollowing);
    for (int i = 0; i < nFollowing; ++i) {
        if (nPosition == bytes.size() || (bytes[nPosition] & 0xC0) != 0x80) {
            return false;
        }
        ch = ch << 6 | (bytes[nPosition++] & 0x3F);
    }
    return ch >= LOWEST[nFollowing] && ch <= 0x10FFFF && !IsHighSurrogate(ch) && !IsLowSurrogate(ch);
}

} // namespace

int CompareNoCase(const WideText& left, const WideText& right) noexcept
{
    return Compare(left.data(), left.size(), right.data(), right.size());
}

int CompareNoCase(LPCWSTR szLeft, LPCWSTR szRight) noexcept
{
    return Compare(szLeft, Traits::length(szLeft), szRight, Traits::length(szRight));
}

std::string ToUtf8(const WideText& text)
{
    std::string bytes;
    for (std::size_t nPosition = 0; nPosition < text.size();) {
        AppendUtf8(bytes, TakeCharacter(text, nPosition));
    }
    return bytes;
}

bool FromUtf8(const std::string& bytes, WideText& text)
{
    text.clear();
    for (std::size_t nPosition = 0; nPosition < bytes.size();) {
        char32_t ch = 0;
        if (!TakeUtf8(bytes, nPosition, ch)) {
            return false;
        }
        AppendWide(text, ch);
    }
    return true;
}

WideText FromAnsi(const std::string& bytes)
{
    const int cbBytes = static_cast<int>(bytes.size());
    WideText text(bytes.size(), 0);
    const int cchText = MultiByteToWideChar(CP_ACP, 0, bytes.data(), cbBytes, text.data(), cbBytes);
    text.resize(static_cast<std::size_t>(cchText));
    return text;
}

} // namespace Platform
