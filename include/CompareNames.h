#pragma once

#include <string_view>

#include <windows.h>

/// Whether two DLL names are equal; letter case does not count. A null name equals nothing.
bool EqualNames(const WCHAR* szLeft, const WCHAR* szRight) noexcept;
bool EqualNames(std::basic_string_view<WCHAR> left, std::basic_string_view<WCHAR> right) noexcept;
