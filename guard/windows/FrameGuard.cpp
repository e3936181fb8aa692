#include "FrameGuard.h"

#include "ForeignException.h"
#include "GuardEntry.h"

namespace FaultGuard {
namespace {

/// Codes that report to a debugger or to the memory manager and are continued by whoever asked for them.
bool IsNotification(DWORD dwCode) noexcept
{
    constexpr DWORD THREAD_NAME = 0x406D1388;
    constexpr DWORD DEBUGGER_FACILITY = 0x40010000; // debug output, console control keys
    switch (dwCode) {
    case EXCEPTION_BREAKPOINT:
    case EXCEPTION_SINGLE_STEP:
    case STATUS_GUARD_PAGE_VIOLATION:
    case THREAD_NAME:
        return true;
    default:
        return (dwCode & 0xFFFF0000) == DEBUGGER_FACILITY;
    }
}

} // namespace

bool CFrameGuard::Run(void (*pfnCall)(void*), void* pContext)
{
    return CGuardEntry::Run(*this, pfnCall, pContext);
}

bool CFrameGuard::Take(const EXCEPTION_RECORD& exception) noexcept
{
    if (IsNotification(exception.ExceptionCode)) {
        return false;
    }
    m_dwCode = exception.ExceptionCode;
    m_pHostException = TakeHostException(exception);
    return true;
}

} // namespace FaultGuard
