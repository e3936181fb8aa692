#pragma once

#include <windows.h>

/// Whether two DLL names are equal; letter case does not count. A null name equals nothing.
bool EqualNames(const WCHAR* szLeft, const WCHAR* szRight) noexcept;
