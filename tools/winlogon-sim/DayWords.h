#pragma once

#include <string>
#include <vector>

/// A word of a line: NAME, or NAME=VALUE.
struct CDayWord
{
    std::string name;
    std::string value;
    bool bHasValue = false;
    /// Whether the value was written in quotes, and so is a text whatever it looks like.
    bool bQuoted = false;
};

/// The words of one line, without comments. Throws std::runtime_error, with the reason only, for a text
/// without end and for characters right behind a closing quote.
std::vector<CDayWord> SplitDayLine(const std::string& line);
