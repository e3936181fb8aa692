#pragma once

#include <string_view>

#include "Message.h"

/// What is known of a GINA that the built-in table does not have, as it is written in the own key under the
/// name of the GINA's DLL: seven fields, separated by six commas.
///
///     SOFTWARE\Tamsin\Airlink\wpnGina,OldGinaDLL,msgina.dll,0,0,0,0
///
/// "NULL", in any case, stands for an empty text. Flags are decimal numbers, true unless 0.
struct CChainingRecord
{
    using Text = std::basic_string_view<WCHAR>;

    /// A record always has all three, if empty ones. A row of the table may lack one: its data() is null
    /// then.
    Text szSubKey;
    Text szOldGinaDLLKey;
    Text szDefaultGinaDLL;
    bool bTerminator;
    bool bStandalone;
    bool bMustBeFirst;
    bool bIsIncompatible;
};

/// Reads a record; its texts are parts of the argument. Throws CBadArgException, and nothing else, for
/// anything that is no record.
CChainingRecord ParseChainingRecord(const CMessageOrigin& origin, const WCHAR* szCommaDelimitedStr);
