#include "machine/Text.h"

#include <cstdarg>
#include <cstdio>

WideText ToWide(const std::string& text)
{
    const int cbText = static_cast<int>(text.size());
    const int cchWide = MultiByteToWideChar(CP_ACP, 0, text.c_str(), cbText, nullptr, 0);
    WideText wide(static_cast<std::size_t>(cchWide), 0);
    MultiByteToWideChar(CP_ACP, 0, text.c_str(), cbText, wide.data(), cchWide);
    return wide;
}

std::string ToNarrow(const WCHAR* szText)
{
    if (szText == nullptr) {
        return std::string();
    }
    const int cchText = static_cast<int>(std::char_traits<WCHAR>::length(szText));
    const int cbText = WideCharToMultiByte(CP_ACP, 0, szText, cchText, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(cbText), '\0');
    WideCharToMultiByte(CP_ACP, 0, szText, cchText, text.data(), cbText, nullptr, nullptr);
    return text;
}

std::string Shown(const WideText& text)
{
    WideText shown;
    for (const WCHAR ch : text) {
        const bool bControl = ch < ' ' || (ch >= 0x7F && ch < 0xA0);
        shown += bControl ? ToWide(Format("\\x%02x", static_cast<unsigned>(ch))) : WideText(1, ch);
    }
    return ToNarrow(shown.c_str());
}

std::string ShownArgument(const WideText& text)
{
    const std::string shown = Shown(text);
    return shown.find(' ') != std::string::npos ? '"' + shown + '"' : shown;
}

std::string Format(const char* szFormat, ...)
{
    va_list arguments;
    va_start(arguments, szFormat);
    va_list again;
    va_copy(again, arguments);
    std::string text(static_cast<std::size_t>(std::vsnprintf(nullptr, 0, szFormat, arguments)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, szFormat, again);
    va_end(again);
    va_end(arguments);
    return text;
}

std::vector<WideText> Split(const WideText& text, WCHAR separator)
{
    std::vector<WideText> parts;
    std::size_t nBegin = 0;
    for (std::size_t nEnd; (nEnd = text.find(separator, nBegin)) != WideText::npos; nBegin = nEnd + 1) {
        parts.push_back(text.substr(nBegin, nEnd - nBegin));
    }
    parts.push_back(text.substr(nBegin));
    return parts;
}

WideText Trim(const WideText& text)
{
    static constexpr WCHAR BLANKS[] = TEXT(" \t\r");
    const std::size_t nBegin = text.find_first_not_of(BLANKS);
    return nBegin == WideText::npos ? WideText()
                                    : text.substr(nBegin, text.find_last_not_of(BLANKS) + 1 - nBegin);
}

std::vector<std::string> Wrap(std::string text, std::size_t nWidth)
{
    std::vector<std::string> lines;
    while (text.size() > nWidth) {
        const std::size_t nBlank = text.rfind(' ', nWidth);
        const bool bHasBlank = nBlank != std::string::npos && nBlank != 0;
        lines.push_back(text.substr(0, bHasBlank ? nBlank : nWidth));
        text.erase(0, bHasBlank ? nBlank + 1 : nWidth);
    }
    lines.push_back(text);
    return lines;
}
