#pragma once

#include <string>

#include <windows.h>

namespace Platform {

using WideText = std::basic_string<WCHAR>;

/// Compares ignoring the case of the letters of ASCII and Latin-1. The result is below, at or above 0.
int CompareNoCase(const WideText& left, const WideText& right) noexcept;
int CompareNoCase(LPCWSTR szLeft, LPCWSTR szRight) noexcept;

struct CLessNoCase
{
    bool operator()(const WideText& left, const WideText& right) const noexcept
    {
        return CompareNoCase(left, right) < 0;
    }
};

/// A surrogate without its partner becomes U+FFFD.
std::string ToUtf8(const WideText& text);

/// False when the bytes are not UTF-8.
bool FromUtf8(const std::string& bytes, WideText& text);

/// From the ANSI code page.
WideText FromAnsi(const std::string& bytes);

} // namespace Platform
