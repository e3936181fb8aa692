#pragma once

#include "Exceptions.h"

/// Throws CBadArgException, with the name of the argument, unless bGood. A pointer given as bGood must not be
/// null.
inline void RequireArgument(const CMessageOrigin& origin, bool bGood, const WCHAR* szArgument,
                            CSourceLocation where = CSourceLocation::Current())
{
    if (!bGood) {
        throw CBadArgException(origin, szArgument, where);
    }
}
