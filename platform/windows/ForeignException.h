#pragma once

#include <exception>

#include <windows.h>

// C++ exceptions in the form of the compiler that plugins are built with.

namespace FaultGuard {

/// The code under which all of them are raised.
inline constexpr DWORD FOREIGN_EXCEPTION = 0xE06D7363;

/// Raises an exception of the host. It belongs to the frames that it travels through; whoever handles
/// it releases it.
[[noreturn]] void RaiseHostException(std::exception_ptr pException) noexcept;

/// The host's exception, taken out of what RaiseHostException raised; null for anything else.
std::exception_ptr TakeHostException(const EXCEPTION_RECORD& exception) noexcept;

/// Whether it is the exception that is being handled, thrown again by a runtime that only says so.
bool IsRethrow(const EXCEPTION_RECORD& exception) noexcept;

} // namespace FaultGuard
