#include "RegFileLines.h"

#include <algorithm>
#include <cstring>

#include "machine/RegFile.h"
#include "machine/Text.h"

namespace Platform {
namespace {

constexpr WCHAR HEADING[] = TEXT("Windows Registry Editor Version 5.00");
constexpr WCHAR OLD_HEADING[] = TEXT("REGEDIT4");

bool StartsWith(const std::string& bytes, const char* szStart)
{
    return bytes.compare(0, std::strlen(szStart), szStart) == 0;
}

WideText FromUtf16(const std::string& bytes)
{
    if (bytes.size() % sizeof(WCHAR) != 0) {
        throw CRegFileError{"the file is UTF-16 and ends within a character"};
    }
    WideText text(bytes.size() / sizeof(WCHAR), 0);
    std::memcpy(text.data(), bytes.data(), bytes.size());
    return text;
}

WideText Decode(const std::string& bytes)
{
    if (StartsWith(bytes, "\xFF\xFE")) {
        return FromUtf16(bytes.substr(2));
    }
    WideText text;
    if (FromUtf8(StartsWith(bytes, "\xEF\xBB\xBF") ? bytes.substr(3) : bytes, text)) {
        return text;
    }
    if (StartsWith(bytes, "REGEDIT4")) {
        return FromAnsi(bytes);
    }
    throw CRegFileError{"the file is neither UTF-16 nor UTF-8"};
}

/// The lines as they stand, with their numbers.
std::vector<CRegFileLine> SplitLines(const WideText& text)
{
    std::vector<CRegFileLine> lines;
    std::size_t nBegin = 0;
    while (nBegin < text.size()) {
        const std::size_t nEnd = std::min(text.find('\n', nBegin), text.size());
        lines.push_back({lines.size() + 1, text.substr(nBegin, nEnd - nBegin)});
        nBegin = nEnd + 1;
    }
    return lines;
}

/// A text in quotes may go on in the next line, and then every character of that line counts.
bool EndsInText(const WideText& line, bool bInText)
{
    for (std::size_t n = 0; n < line.size(); ++n) {
        if (bInText && line[n] == '\\') {
            ++n;
        } else if (line[n] == '"') {
            bInText = !bInText;
        }
    }
    return bInText;
}

/// Bytes may go on in the next line after a backslash. In quotes and brackets a backslash at the end means
/// something else, or is an error.
bool IsContinued(const WideText& text)
{
    return text.back() == '\\' && text.front() != '[' && text.find(TEXT("hex")) != WideText::npos;
}

std::vector<CRegFileLine> JoinLines(const std::vector<CRegFileLine>& lines)
{
    std::vector<CRegFileLine> joined;
    for (auto line = lines.begin(); line != lines.end(); ++line) {
        CRegFileLine whole = {line->nNumber, Trim(line->text)};
        if (whole.text.empty() || whole.text.front() == ';') {
            continue;
        }
        const bool bValue = whole.text.front() == '"' || whole.text.front() == '@';
        if (bool bInText = bValue && EndsInText(whole.text, false); bInText) {
            whole.text = line->text.substr(line->text.find(whole.text.front()));
            for (; bInText && line + 1 != lines.end(); bInText = EndsInText(line->text, true)) {
                whole.text += TEXT("\n") + (++line)->text;
            }
            whole.text = Trim(whole.text);
        }
        while (IsContinued(whole.text) && line + 1 != lines.end()) {
            whole.text.pop_back();
            whole.text += Trim((++line)->text);
        }
        joined.push_back(std::move(whole));
    }
    return joined;
}

} // namespace

CRegFileText ReadRegFileText(const std::string& bytes)
{
    CRegFileText text = {false, JoinLines(SplitLines(Decode(bytes)))};
    const WideText heading = text.lines.empty() ? WideText() : text.lines.front().text;
    text.bOldFormat = heading == OLD_HEADING;
    if (heading != HEADING && !text.bOldFormat) {
        throw CRegFileError{"line 1: the heading of a registry file is missing"};
    }
    text.lines.erase(text.lines.begin());
    return text;
}

} // namespace Platform
