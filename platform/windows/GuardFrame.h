#pragma once

#include "FrameGuard.h"

// The entries of the thread's list of exception frames, which no C++ compiler of the host makes.

namespace FaultGuard::GuardFrame {

/// Runs pfnCall(pContext) with an entry for the guard. False when the guard has taken an exception of it;
/// the frames inside have been unwound by their own handlers then, as far as they have any.
bool Run(CFrameGuard& guard, void (*pfnCall)(void*), void* pContext);

/// The guard of the innermost entry; null when the list has none.
CFrameGuard* FindInnermost() noexcept;

} // namespace FaultGuard::GuardFrame
