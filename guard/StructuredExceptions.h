#pragma once

#include <windows.h>

// Exceptions that are not the host's, for stand-in DLLs that must fail as software of other compilers does.

namespace FaultGuard {

/// Raises a C++ exception as the compiler of real plugins does; never returns.
[[noreturn]] void RaiseForeignException();

} // namespace FaultGuard

/// Structured exceptions of any code.
namespace StructuredExceptions {

/// Whether the system has them: Windows does.
bool AreAvailable() noexcept;

/// Raises one that can be continued, without arguments. Returns when a debugger or handler has continued it,
/// or at once on a system without structured exceptions.
void Raise(DWORD dwCode);

} // namespace StructuredExceptions
