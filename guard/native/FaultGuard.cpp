#include "guard/FaultGuard.h"

#include "guard/StructuredExceptions.h"
#include "guard/ThreadState.h"
#include "AlternateStack.h"
#include "FaultSignals.h"
#include "SignalGuard.h"

// On Linux all compilers throw alike: exceptions of the host, and those of native plugins, cross a DLL's
// frames by themselves. Only faults need a guard.

namespace FaultGuard {

/// Stands for an exception of the plugins' compiler. It is thrown in one module and caught in another. They
/// know the class by its name, so it must not be one of this file alone.
struct CForeignException
{
};

namespace {

constexpr DWORD NO_FAULT = 0;
constexpr DWORD FOREIGN_EXCEPTION = 0xE06D7363;

struct CCall
{
    void (*pfnCall)(void*);
    void* pContext;
};

DWORD Call(void* pContext)
{
    const auto& call = *static_cast<const CCall*>(pContext);
    try {
        call.pfnCall(call.pContext);
        return NO_FAULT;
    } catch (const CForeignException&) {
        return FOREIGN_EXCEPTION;
    }
}

void CallInGuard(void* pContext)
{
    CSignalGuard guard;
    const CThreadState state;
    if (const DWORD dwCode = guard.Run(Call, pContext); dwCode != NO_FAULT) {
        state.Restore();
        throw CForeignFault(dwCode);
    }
}

} // namespace

void RunGuarded(void (*pfnCall)(void*), void* pContext)
{
    CFaultSignals::Install();
    CCall call{pfnCall, pContext};
    CallWithAlternateStack(CallInGuard, &call);
}

void ThrowToCaller(const CCaller&, std::exception_ptr pException)
{
    std::rethrow_exception(std::move(pException));
}

void RaiseForeignException()
{
    throw CForeignException();
}

} // namespace FaultGuard
