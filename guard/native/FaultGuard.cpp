#include "guard/FaultGuard.h"

#include "guard/StructuredExceptions.h"
#include "guard/ThreadState.h"
#include "AlternateStack.h"
#include "FaultSignals.h"
#include "SignalGuard.h"

// Here all compilers throw alike: exceptions cross a DLL's frames by themselves, the host's and those
// that a native plugin throws. Only faults need a guard.

namespace FaultGuard {

/// Stands for the exception of a plugin's compiler. It is thrown in one module and caught in another,
/// which know the class by its name; so it needs one that is not this file's own.
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
