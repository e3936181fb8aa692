#include "guard/FaultGuard.h"

#include "guard/ThreadState.h"
#include "ForeignException.h"
#include "FrameGuard.h"
#include "GuardEntry.h"
#include "HostFrames.h"
#include "StackGuardPage.h"

namespace FaultGuard {
namespace {

struct CCall
{
    void (*pfnCall)(void*);
    void* pContext;
    std::exception_ptr pException;
};

// The host's compiler cannot unwind the guard's frame: its exceptions are carried around it.
void Call(void* pContext)
{
    auto& call = *static_cast<CCall*>(pContext);
    try {
        call.pfnCall(call.pContext);
    } catch (...) {
        call.pException = std::current_exception();
    }
}

void Recover(const CThreadState& state, DWORD dwCode) noexcept
{
    state.Restore();
    if (dwCode == EXCEPTION_STACK_OVERFLOW) {
        RestoreStackGuardPage();
    }
}

/// Whether what is thrown here would be thrown into a DLL. A thread on which the host has marked nothing is a
/// DLL's own.
bool IsDLLInnermost() noexcept
{
    const CExceptionFrame* pFrame = CExceptionFrame::GetInnermost();
    while (!pFrame->IsEnd() && !IsHostFrames(*pFrame) && !CGuardEntry::Is(*pFrame)) {
        pFrame = pFrame->pOuter;
    }
    return pFrame->IsEnd() || CGuardEntry::Is(*pFrame);
}

} // namespace

void RunGuarded(void (*pfnCall)(void*), void* pContext)
{
    CFrameGuard guard;
    const CThreadState state;
    CCall call{pfnCall, pContext, nullptr};
    if (guard.Run(Call, &call)) {
        if (call.pException != nullptr) {
            std::rethrow_exception(std::move(call.pException));
        }
        return;
    }
    Recover(state, guard.GetCode());
    if (guard.GetHostException() != nullptr) {
        std::rethrow_exception(guard.GetHostException());
    }
    throw CForeignFault(guard.GetCode());
}

void ThrowToCaller(std::exception_ptr pException)
{
    if (!IsDLLInnermost()) {
        std::rethrow_exception(std::move(pException));
    }
    RaiseHostException(std::move(pException));
}

} // namespace FaultGuard
