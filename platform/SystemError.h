#pragma once

#include <windows.h>

namespace Native {

/// The Windows code for an errno.
DWORD FromErrno(int nErrno) noexcept;

} // namespace Native
