#pragma once

#include <exception>

#include <windows.h>

namespace FaultGuard {

/// A guard on 32-bit Windows, which looks for the handler of an exception in a list of frames.
class CFrameGuard
{
public:
    CFrameGuard() noexcept = default;
    CFrameGuard(const CFrameGuard&) = delete;
    CFrameGuard& operator=(const CFrameGuard&) = delete;

    /// Runs pfnCall(pContext). False when an exception ended it; the guard then holds the exception. The
    /// frames inside have been unwound by their own handlers, if they have any.
    bool Run(void (*pfnCall)(void*), void* pContext);

    /// The code of the exception that ended the call.
    DWORD GetCode() const noexcept { return m_dwCode; }

    /// The exception that ended the call when it was the host's own, otherwise null.
    const std::exception_ptr& GetHostException() const noexcept { return m_pHostException; }

    /// For the exception handler: takes the exception and returns true if it ends the call.
    bool Take(const EXCEPTION_RECORD& exception) noexcept;

private:
    DWORD m_dwCode = 0;
    std::exception_ptr m_pHostException;
};

} // namespace FaultGuard
