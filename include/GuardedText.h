#pragma once

#include <cstddef>

#include "Messages.h"

/// The length of a text, in characters, that may come from outside the host: a plugin may have left any
/// pointer in its record. Throws CWcscpyException when it cannot be read.
std::size_t MeasureText(const CMessageOrigin& origin, const WCHAR* szText,
                        CSourceLocation where = CSourceLocation::Current());
