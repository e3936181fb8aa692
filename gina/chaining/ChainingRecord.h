#pragma once

#include <optional>
#include <string_view>

#include <windows.h>

/// What is known of a GINA: where it keeps its passthrough value, what it passes through to by default, and
/// what kind of GINA it is.
///
/// A GINA that is not in the built-in table may be described in the host's own key, by a value named like its
/// DLL: seven fields, separated by six commas.
///
///     SOFTWARE\Tamsin\Airlink\wpnGina,OldGinaDLL,msgina.dll,0,0,0,0
///
/// "NULL", in any case, stands for an empty text. Flags are decimal numbers, true unless 0.
struct CChainingRecord
{
    using Text = std::basic_string_view<WCHAR>;

    /// A record from the registry has all three texts, some perhaps empty. A row of the table may lack one:
    /// its data() is null then.
    Text szSubKey;
    Text szOldGinaDLLKey;
    Text szDefaultGinaDLL;
    bool bTerminator = false;
    bool bStandalone = false;
    bool bMustBeFirst = false;
    bool bIsIncompatible = false;
};

/// Reads a record. Its texts are parts of the argument. Returns nothing for a text that is not a record.
std::optional<CChainingRecord> ParseChainingRecord(CChainingRecord::Text record) noexcept;
