#pragma once

#include <cstddef>
#include <string_view>

#include "Message.h"
#include "Owned.h"

// Reads texts that may come from outside the host: a plugin can leave any pointer in its record. All
// functions throw CWcscpyException for a pointer that cannot be read or written.

/// The length of a text, in characters.
std::size_t MeasureText(const CMessageOrigin& origin, const WCHAR* szText,
                        CSourceLocation where = CSourceLocation::Current());

/// Copies cchText characters into a caller's buffer and adds the terminating zero.
void CopyToBuffer(const CMessageOrigin& origin, WCHAR* szBuffer, const WCHAR* szText, std::size_t cchText,
                  CSourceLocation where = CSourceLocation::Current());

/// Returns a copy of the text. szVariable names the variable that is to hold it, for the CMemAllocException
/// that is thrown when there is no memory.
COwnedText CopyText(const CMessageOrigin& origin, std::basic_string_view<WCHAR> text, const WCHAR* szVariable,
                    CSourceLocation where = CSourceLocation::Current());

/// The same for a text that ends with a zero.
COwnedText CopyText(const CMessageOrigin& origin, const WCHAR* szText, const WCHAR* szVariable,
                    CSourceLocation where = CSourceLocation::Current());
