#pragma once

#include "Exceptions.h"

/// For constructors: throws CBadArgException, which names the argument, when it is null.
inline void RequireArgument(const CMessageOrigin& origin, const void* pArgument, const WCHAR* szArgument,
                            CSourceLocation where = CSourceLocation::Current())
{
    if (pArgument == nullptr) {
        throw CBadArgException(origin, szArgument, where);
    }
}
