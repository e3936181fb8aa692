#pragma once

#include <windows.h>

namespace FaultGuard {

/// An entry of the thread's list of exception frames. The system goes through the list, innermost entry
/// first, to find the handler of an exception, and again to unwind. The host keeps no other record of
/// what a thread is in, so nothing is left over of frames that somebody else's handler ends.
///
/// Any compiler's frames may be in it, so nothing may be concluded from the types of pointers.
struct __attribute__((may_alias)) CExceptionFrame
{
    CExceptionFrame* pOuter;
    const void* pfnHandler;

    static CExceptionFrame* GetInnermost() noexcept
    {
        return reinterpret_cast<CExceptionFrame*>(__readfsdword(0));
    }
    static void SetInnermost(void* pFrame) noexcept { __writefsdword(0, reinterpret_cast<DWORD>(pFrame)); }

    /// Whether this is what the last entry points to.
    bool IsEnd() const noexcept { return this == reinterpret_cast<CExceptionFrame*>(-1); }
};

/// How the system calls the handler of an entry.
using ExceptionHandler = EXCEPTION_DISPOSITION(EXCEPTION_RECORD* pException, CExceptionFrame* pFrame,
                                               CONTEXT*, void*);

/// Whether a handler is called because the frames are being unwound, not to handle the exception.
inline bool IsUnwinding(const EXCEPTION_RECORD& exception) noexcept
{
    constexpr DWORD UNWIND_FLAGS = 0x2 | 0x4; // EXCEPTION_UNWINDING, EXCEPTION_EXIT_UNWIND
    return (exception.ExceptionFlags & UNWIND_FLAGS) != 0;
}

} // namespace FaultGuard
