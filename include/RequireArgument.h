#pragma once

#include "Exceptions.h"

/// Throws CBadArgException, which names the argument, unless it is good: for a pointer, not null.
inline void RequireArgument(const CMessageOrigin& origin, bool bGood, const WCHAR* szArgument,
                            CSourceLocation where = CSourceLocation::Current())
{
    if (!bGood) {
        throw CBadArgException(origin, szArgument, where);
    }
}
