#pragma once

#include <string>
#include <vector>

#include <windows.h>

// Text as the tools handle it: narrow inside, in the ANSI code page, and wide in calls of the system. So text
// from the command line or a file reaches the console as it came.

using WideText = std::basic_string<WCHAR>;

WideText ToWide(const std::string& text);

/// Null gives the empty text.
std::string ToNarrow(const WCHAR* szText);

/// For people's eyes: control characters, which a terminal would obey, as \x1b.
std::string Shown(const WideText& text);

/// The same, as an argument of a command line: in quotes when it has a blank in it.
std::string ShownArgument(const WideText& text);

/// printf into a string.
__attribute__((format(printf, 1, 2))) std::string Format(const char* szFormat, ...);

/// Cuts a text at each separator. At least one part.
std::vector<WideText> Split(const WideText& text, WCHAR separator);

/// Without the blanks, tabs and carriage returns around it.
WideText Trim(const WideText& text);

/// Cuts a text into lines of at most nWidth characters, between words where that is possible. At least one.
std::vector<std::string> Wrap(std::string text, std::size_t nWidth);
