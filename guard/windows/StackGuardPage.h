#pragma once

namespace FaultGuard {

/// Puts the guard page back that a stack overflow used up, so that the thread's next one is reported as
/// well. Without it the next one ends the process without a word. To be called high up on the stack.
void RestoreStackGuardPage() noexcept;

} // namespace FaultGuard
