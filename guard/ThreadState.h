#pragma once

#include <cxxabi.h>

#include "guard/FloatingPoint.h"

namespace FaultGuard {

/// The C++ runtime's record of what a thread throws and handles. The ABI fixes its layout, but the header
/// hides it.
struct CExceptionGlobals
{
    void* pCaught;
    unsigned int nUncaught;
};

/// The state that a thread must have again after a fault has ended a guarded call.
class CThreadState
{
public:
    CThreadState() noexcept : m_Handling(GetHandling()) {}

    void Restore() const noexcept
    {
        m_FloatingPoint.Restore();
        CloseLaterHandlers();
    }

private:
    static CExceptionGlobals& GetHandling() noexcept
    {
        return *reinterpret_cast<CExceptionGlobals*>(abi::__cxa_get_globals());
    }

    // A fault in a catch block skips its end. The runtime would believe for ever that the thread is still in
    // it, and keep the exception.
    void CloseLaterHandlers() const noexcept
    {
        while (GetHandling().pCaught != nullptr && GetHandling().pCaught != m_Handling.pCaught) {
            abi::__cxa_end_catch();
        }
        GetHandling().nUncaught = m_Handling.nUncaught;
    }

    CExceptionGlobals m_Handling;
    CFloatingPoint m_FloatingPoint;
};

} // namespace FaultGuard
