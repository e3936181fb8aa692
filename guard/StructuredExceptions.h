#pragma once

#include <windows.h>

// Structured exceptions of any code, for stand-in DLLs that must fail as software does that raises its own.
namespace StructuredExceptions {

/// Whether the system has them: Windows does.
bool AreAvailable() noexcept;

/// Raises one that can be continued, without arguments. Returns when a debugger or handler continued it, and
/// at once where the system has none.
void Raise(DWORD dwCode);

} // namespace StructuredExceptions
