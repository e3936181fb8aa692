#include "guard/FaultGuard.h"

#include "guard/ThreadState.h"
#include "ForeignException.h"
#include "FrameGuard.h"
#include "StackGuardPage.h"

/// Where the linker has put this module.
extern "C" const IMAGE_DOS_HEADER __ImageBase;

namespace FaultGuard {
namespace {

struct CCall
{
    void (*pfnCall)(void*);
    void* pContext;
    std::exception_ptr pException;
};

// The host's C++ exceptions cannot unwind the guard's frame, so they are carried around it.
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

bool IsOwnCode(const void* pCode) noexcept
{
    const auto nBase = reinterpret_cast<ULONG_PTR>(&__ImageBase);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS*>(nBase + __ImageBase.e_lfanew);
    return reinterpret_cast<ULONG_PTR>(pCode) - nBase < headers.OptionalHeader.SizeOfImage;
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

void ThrowToCaller(const CCaller& caller, std::exception_ptr pException)
{
    if (IsOwnCode(caller.pReturnAddress)) {
        std::rethrow_exception(std::move(pException));
    }
    RaiseHostException(std::move(pException));
}

} // namespace FaultGuard
