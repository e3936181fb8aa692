#include "DayWords.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr char BLANKS[] = " \t\r";

/// Takes the text up to the closing quote; nPosition is behind the opening one.
std::string TakeQuoted(const std::string& line, std::size_t& nPosition)
{
    const std::size_t nEnd = line.find('"', nPosition);
    if (nEnd == std::string::npos) {
        throw std::runtime_error("a text without end; expected a closing quote");
    }
    std::string text = line.substr(nPosition, nEnd - nPosition);
    nPosition = nEnd + 1;
    if (nPosition < line.size() && std::string(BLANKS).find(line[nPosition]) == std::string::npos) {
        throw std::runtime_error("characters right behind a closing quote; expected a blank");
    }
    return text;
}

std::string TakeUntil(const std::string& line, std::size_t& nPosition, const std::string& delimiters)
{
    const std::size_t nEnd = std::min(line.find_first_of(delimiters, nPosition), line.size());
    std::string text = line.substr(nPosition, nEnd - nPosition);
    nPosition = nEnd;
    return text;
}

CDayWord TakeWord(const std::string& line, std::size_t& nPosition)
{
    CDayWord word;
    word.name = TakeUntil(line, nPosition, std::string(BLANKS) + "=");
    word.bHasValue = nPosition < line.size() && line[nPosition] == '=';
    if (word.bHasValue) {
        ++nPosition;
        word.bQuoted = nPosition < line.size() && line[nPosition] == '"';
        word.value = word.bQuoted ? TakeQuoted(line, ++nPosition) : TakeUntil(line, nPosition, BLANKS);
    }
    return word;
}

} // namespace

std::vector<CDayWord> SplitDayLine(const std::string& line)
{
    std::vector<CDayWord> words;
    std::size_t nPosition = line.find_first_not_of(BLANKS);
    while (nPosition != std::string::npos && line[nPosition] != '#') {
        words.push_back(TakeWord(line, nPosition));
        nPosition = line.find_first_not_of(BLANKS, nPosition);
    }
    return words;
}
