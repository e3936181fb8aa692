#pragma once

#include <csetjmp>

#include "../Guard.h"

namespace FaultGuard {

/// The guard of a system that reports faults as signals; the innermost of its thread while it exists.
class CSignalGuard : public CGuard
{
public:
    CSignalGuard() noexcept;
    ~CSignalGuard();

    /// Runs pfnCall(pContext). False when a fault ended it; GetCode() tells which.
    bool Run(void (*pfnCall)(void*), void* pContext);

    DWORD GetCode() const noexcept { return m_dwCode; }

    /// Ends the call because of a fault. For the signal handler.
    [[noreturn]] void Abandon(DWORD dwCode) noexcept;

    /// Whether the address lies where the call has its frames. pStackPointer: the end of the last one.
    bool IsInFrames(const void* pAddress, const void* pStackPointer) const noexcept;

private:
    CSignalGuard* m_pOuter;
    const void* m_pFirstFrame = nullptr;
    sigjmp_buf m_ReturnPoint;
    volatile DWORD m_dwCode = 0;
};

} // namespace FaultGuard
