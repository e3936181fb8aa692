#pragma once

namespace FaultGuard {

/// Restores the guard page that a stack overflow has used up. Without it, the thread's next overflow ends the
/// process silently. To be called high up on the stack, after unwinding.
void RestoreStackGuardPage() noexcept;

} // namespace FaultGuard
