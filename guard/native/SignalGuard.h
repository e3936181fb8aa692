#pragma once

#include <csetjmp>

#include <windows.h>

namespace FaultGuard {

/// A guard on a system that reports faults as signals. Once it runs a call, it is the innermost guard of its
/// thread as long as it exists.
class CSignalGuard
{
public:
    /// The innermost guard of this thread; null outside all guards.
    static CSignalGuard* GetInnermost() noexcept;

    CSignalGuard() noexcept;
    ~CSignalGuard();
    CSignalGuard(const CSignalGuard&) = delete;
    CSignalGuard& operator=(const CSignalGuard&) = delete;

    /// Returns what pfnCall(pContext) returns, or the code of the fault that ended it.
    DWORD Run(DWORD (*pfnCall)(void*), void* pContext);

    /// Ends the call because of a fault. For the signal handler.
    [[noreturn]] void Abandon(DWORD dwCode) noexcept;

    /// Whether the address lies in the call's stack frames. pStackPointer: the end of the last one.
    bool IsInFrames(const void* pAddress, const void* pStackPointer) const noexcept;

private:
    CSignalGuard* m_pOuter;
    const void* m_pFirstFrame = nullptr;
    sigjmp_buf m_ReturnPoint;
    volatile DWORD m_dwFault = 0;
};

} // namespace FaultGuard
