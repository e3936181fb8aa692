#pragma once

#include <windows.h>

// Settings of the sample plugins, under HKEY_LOCAL_MACHINE. They are read when they are needed, so a change
// takes effect at once. A value that is missing, of another type or malformed counts as not set.

/// A REG_DWORD value; 0 when it is not set.
DWORD ReadNumber(const WCHAR* szKey, const WCHAR* szValue) noexcept;

/// A REG_SZ value. szText has room for cchText characters, the terminator included. A longer text counts as
/// not set. Empty when it is not set.
void ReadText(const WCHAR* szKey, const WCHAR* szValue, WCHAR* szText, DWORD cchText) noexcept;
