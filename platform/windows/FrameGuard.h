#pragma once

#include <exception>

#include "../Guard.h"

namespace FaultGuard {

/// The guard of a system that looks for a handler of an exception in the thread's list of frames: a
/// frame of that list around the call.
class CFrameGuard : public CGuard
{
public:
    CFrameGuard() noexcept = default;

    /// Runs pfnCall(pContext). False when an exception ended it, which the guard then holds.
    bool Run(void (*pfnCall)(void*), void* pContext) noexcept;

    /// The code of the exception that ended the call.
    DWORD GetCode() const noexcept { return m_dwCode; }

    /// The host's exception that ended the call; null when it was none of the host's.
    const std::exception_ptr& GetHostException() const noexcept { return m_pHostException; }

    /// Raises the host's exception for the frames of the DLL that the call is in.
    [[noreturn]] void RaiseHostException(std::exception_ptr pException);

    /// Whether the exception ends the call. Takes it then.
    bool Take(const EXCEPTION_RECORD& exception) noexcept;

private:
    DWORD m_dwCode = 0;
    std::exception_ptr m_pHostException;
    std::exception_ptr m_pLastRaised;
};

} // namespace FaultGuard
