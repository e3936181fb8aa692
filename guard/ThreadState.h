#pragma once

#include <cfenv>
#include <cxxabi.h>

namespace FaultGuard {

/// The C++ runtime's record of what a thread throws and handles. The ABI fixes its layout, and its header
/// does not show it.
struct CExceptionGlobals
{
    void* pCaught;
    unsigned int nUncaught;
};

/// What a thread must have again when a fault has ended a guarded call.
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
        // An exception that is pending would be raised by whatever comes next, even by the restoring.
        asm volatile("fninit");
        std::fesetenv(&m_Environment);
    }

    // A fault in a catch block leaves it without its end being reached. The runtime would believe for
    // ever that the thread is still in it, and keep the exception.
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
