#pragma once

#include <cstddef>
#include <string>

#include "Messages.h"

/// The length of a text, in characters, that may come from outside the host: a plugin may have left any
/// pointer in its record. Throws CWcscpyException when it cannot be read.
std::size_t MeasureText(const CMessageOrigin& origin, const WCHAR* szText,
                        CSourceLocation where = CSourceLocation::Current());

/// A copy of such a text. Throws CWcscpyException when it cannot be read.
std::basic_string<WCHAR> ReadText(const CMessageOrigin& origin, const WCHAR* szText,
                                  CSourceLocation where = CSourceLocation::Current());

/// Copies cchText characters into a buffer that a caller has given, and terminates them. Throws
/// CWcscpyException when that cannot be done.
void CopyToBuffer(const CMessageOrigin& origin, WCHAR* szBuffer, const WCHAR* szText, std::size_t cchText,
                  CSourceLocation where = CSourceLocation::Current());
