#pragma once

#include <optional>
#include <string_view>

#include "Messages.h"

/// What is known of a GINA that the built-in table does not have, as it is written in the own key under the
/// name of the GINA's DLL: seven fields, separated by six commas.
///
///     SOFTWARE\Tamsin\Airlink\wpnGina,OldGinaDLL,msgina.dll,0,0,0,0
///
/// "NULL", in any case, stands for an empty text. Flags are decimal numbers, true unless 0.
struct CChainingRecord
{
    using Text = std::basic_string_view<WCHAR>;

    Text szSubKey;
    Text szOldGinaDLLKey;
    /// A record always has one, if an empty one; a row of the table may have none.
    std::optional<Text> szDefaultGinaDLL;
    bool bTerminator;
    bool bStandalone;
    bool bMustBeFirst;
    bool bIsIncompatible;
};

/// Reads a record; its texts are parts of the argument. Throws CBadArgException, and nothing else, for
/// anything that is no record.
CChainingRecord ParseChainingRecord(const CMessageOrigin& origin, const WCHAR* szCommaDelimitedStr);
