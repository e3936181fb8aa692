#pragma once

#include <windows.h>

namespace FaultGuard {

/// An entry of the thread's list of exception frames. The system goes through the list, innermost entry
/// first, to find the handler of an exception, and again to unwind. An entry lies in the stack frame that
/// it stands for.
///
/// Any compiler's frames may be in the list, so nothing may be concluded from the types of pointers.
struct __attribute__((may_alias)) CExceptionFrame
{
    CExceptionFrame* pOuter;
    const void* pfnHandler;

    /// Makes this the innermost entry. The system's headers have functions for this, but without a word to
    /// the compiler that memory changes: it leaves out what it takes to be without effect.
    void Push() noexcept
    {
        asm volatile("movl %%fs:0, %0" : "=r"(pOuter) : : "memory");
        asm volatile("movl %0, %%fs:0" : : "r"(this) : "memory");
    }
};

/// Whether a handler is called because the frames are being unwound, not to handle the exception.
inline bool IsUnwinding(const EXCEPTION_RECORD& exception) noexcept
{
    constexpr DWORD UNWIND_FLAGS = 0x2 | 0x4; // EXCEPTION_UNWINDING, EXCEPTION_EXIT_UNWIND
    return (exception.ExceptionFlags & UNWIND_FLAGS) != 0;
}

} // namespace FaultGuard
