#pragma once

#include <cfenv>
#include <cxxabi.h>

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
    CThreadState() noexcept : m_Handling(GetHandling()) { std::fegetenv(&m_Environment); }

    void Restore() const noexcept
    {
        RestoreFloatingPoint();
        CloseLaterHandlers();
    }

private:
    static CExceptionGlobals& GetHandling() noexcept
    {
        return *reinterpret_cast<CExceptionGlobals*>(abi::__cxa_get_globals());
    }

    void RestoreFloatingPoint() const noexcept
    {
        // A pending floating-point exception would be raised by the next instruction, even by fesetenv.
        asm volatile("fninit");
        std::fesetenv(&m_Environment);
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
    std::fenv_t m_Environment;
};

} // namespace FaultGuard
