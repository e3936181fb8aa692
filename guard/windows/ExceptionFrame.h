#pragma once

#include <windows.h>

namespace FaultGuard {

/// An entry of the thread's list of exception frames. The system goes through the list, innermost entry
/// first, to find the handler of an exception, and again to unwind. An entry lies in the stack frame that it
/// stands for.
///
/// Frames of any compiler may be in the list, so the optimiser may conclude nothing from the types of
/// pointers.
struct __attribute__((may_alias)) CExceptionFrame
{
    CExceptionFrame* pOuter;
    const void* pfnHandler;

    /// Makes this the innermost entry. The functions of the system's headers do not tell the compiler that
    /// memory changes, so it drops writes that seem to have no effect.
    void Push() noexcept
    {
        asm volatile("movl %%fs:0, %0" : "=r"(pOuter) : : "memory");
        asm volatile("movl %0, %%fs:0" : : "r"(this) : "memory");
    }
};

/// Whether a handler is called to unwind its frame, not to handle the exception.
inline bool IsUnwinding(const EXCEPTION_RECORD& exception) noexcept
{
    constexpr DWORD UNWIND_FLAGS = 0x2 | 0x4; // EXCEPTION_UNWINDING, EXCEPTION_EXIT_UNWIND
    return (exception.ExceptionFlags & UNWIND_FLAGS) != 0;
}

} // namespace FaultGuard
