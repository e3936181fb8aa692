#include "SignalGuard.h"

#include <functional>

namespace {

// The signal handler reads this variable, so its first use must not allocate memory.
__attribute__((tls_model("initial-exec"))) constinit thread_local FaultGuard::CSignalGuard* t_pInnermost =
    nullptr;

} // namespace

namespace FaultGuard {

CSignalGuard* CSignalGuard::GetInnermost() noexcept
{
    return t_pInnermost;
}

CSignalGuard::CSignalGuard() noexcept : m_pOuter(t_pInnermost) {}

CSignalGuard::~CSignalGuard()
{
    t_pInnermost = m_pOuter;
}

// Not inlined and without variables, because it returns twice.
__attribute__((noinline)) DWORD CSignalGuard::Run(DWORD (*pfnCall)(void*), void* pContext)
{
    m_pFirstFrame = __builtin_frame_address(0);
    if (sigsetjmp(m_ReturnPoint, 1) != 0) {
        // What comes next may fault as well, and this frame is left by then.
        t_pInnermost = m_pOuter;
        return m_dwFault;
    }
    // Only now there is a place to return to. If the stack overflowed before, that is a matter of the outer
    // guard.
    t_pInnermost = this;
    return pfnCall(pContext);
}

void CSignalGuard::Abandon(DWORD dwCode) noexcept
{
    m_dwFault = dwCode;
    siglongjmp(m_ReturnPoint, 1);
}

bool CSignalGuard::IsInFrames(const void* pAddress, const void* pStackPointer) const noexcept
{
    // A call writes below the stack pointer before it moves it.
    constexpr std::size_t cbBelow = 4096;
    const std::less<const void*> isBelow;
    return isBelow(static_cast<const char*>(pStackPointer) - cbBelow, pAddress) &&
           isBelow(pAddress, m_pFirstFrame);
}

} // namespace FaultGuard
