#pragma once

#include <new>
#include <string>
#include <string_view>

#include "Exceptions.h"

/// Copies a text for the member szVariable, which the exception names when there is no memory for it.
/// Throws CMemAllocException.
inline std::basic_string<WCHAR> CopyText(const CMessageOrigin& origin, std::basic_string_view<WCHAR> text,
                                         const WCHAR* szVariable)
{
    try {
        return std::basic_string<WCHAR>(text);
    } catch (const std::bad_alloc&) {
        throw CMemAllocException(origin, szVariable);
    }
}
