#pragma once

#include "ExceptionFrame.h"
#include "FrameGuard.h"

namespace FaultGuard {

/// The entry of a guard. Only the assembly that it comes with makes one.
struct __attribute__((may_alias)) CGuardEntry : CExceptionFrame
{
    CFrameGuard* pGuard;

    /// Runs pfnCall(pContext) inside an entry for the guard. False when the guard has taken an exception;
    /// the frames inside have been unwound by their own handlers then, as far as they have any.
    static bool Run(CFrameGuard& guard, void (*pfnCall)(void*), void* pContext);

    /// Whether an entry is one of these.
    static bool Is(const CExceptionFrame& frame) noexcept;
};

} // namespace FaultGuard
