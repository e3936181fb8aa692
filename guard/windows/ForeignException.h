#pragma once

#include <exception>

#include <windows.h>

// C++ exceptions in the form of the compiler that plugins are built with.

namespace FaultGuard {

/// Raises an exception of the host. It belongs to the frames that it travels through: one that swallows it
/// releases it.
[[noreturn]] void RaiseHostException(std::exception_ptr pException) noexcept;

/// The host's exception, taken out of what RaiseHostException raised; null for anything else.
std::exception_ptr TakeHostException(const EXCEPTION_RECORD& exception) noexcept;

} // namespace FaultGuard
