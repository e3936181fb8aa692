#pragma once

#include <string>

#include <windows.h>

// Text as the tools handle it: narrow and in UTF-8 inside, wide where it meets the system.

using WideText = std::basic_string<WCHAR>;

/// UTF-8 to wide text. What is not UTF-8 becomes U+FFFD.
WideText ToWide(const std::string& text);

/// Wide text to UTF-8. A lone surrogate becomes U+FFFD; null gives the empty text.
std::string ToNarrow(const WCHAR* szText);

/// printf into a string.
__attribute__((format(printf, 1, 2))) std::string Format(const char* szFormat, ...);
