#pragma once

#include <string>
#include <vector>

#include "platform/PlatformText.h"

namespace Platform {

/// A line that is neither empty nor a comment. Continued lines are joined to one, without the blanks around
/// them, except within a text.
struct CRegFileLine
{
    std::size_t nNumber; ///< in the file, from 1; of the first one of joined lines
    WideText text;
};

struct CRegFileText
{
    /// "REGEDIT4": a text given in bytes is in the ANSI code page.
    bool bOldFormat;
    /// Without heading, comments and empty lines.
    std::vector<CRegFileLine> lines;
};

/// Throws CRegFileError.
CRegFileText ReadRegFileText(const std::string& bytes);

} // namespace Platform
