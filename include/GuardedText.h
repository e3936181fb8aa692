#pragma once

#include <cstddef>
#include <string_view>

#include "Message.h"
#include "Owned.h"

// Texts that may come from outside the host: a plugin may have left any pointer in its record. All functions
// throw CWcscpyException for one that cannot be read or written.

/// The length of a text, in characters.
std::size_t MeasureText(const CMessageOrigin& origin, const WCHAR* szText,
                        CSourceLocation where = CSourceLocation::Current());

/// Copies cchText characters into a buffer that a caller has given, and terminates them.
void CopyToBuffer(const CMessageOrigin& origin, WCHAR* szBuffer, const WCHAR* szText, std::size_t cchText,
                  CSourceLocation where = CSourceLocation::Current());

/// A copy for the member szVariable, which the exception names when there is no memory for it. Throws
/// CMemAllocException, too.
COwnedText CopyText(const CMessageOrigin& origin, std::basic_string_view<WCHAR> text, const WCHAR* szVariable,
                    CSourceLocation where = CSourceLocation::Current());

/// The same of a text that ends with a zero.
COwnedText CopyText(const CMessageOrigin& origin, const WCHAR* szText, const WCHAR* szVariable,
                    CSourceLocation where = CSourceLocation::Current());
