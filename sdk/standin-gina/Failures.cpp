#include "Failures.h"

#include "guard/StructuredExceptions.h"

namespace {

// The values are volatile, so that no compiler may conclude that the faults cannot happen. The
// undefined-behaviour sanitizer is kept out, so that the fault is the processor's.

__attribute__((no_sanitize("undefined"), noinline)) void ReadNull()
{
    const volatile BYTE* volatile pNull = nullptr;
    static_cast<void>(*pNull);
}

__attribute__((no_sanitize("undefined"), noinline)) void DivideByZero()
{
    volatile int nDividend = 1;
    volatile int nDivisor = 0;
    volatile int nQuotient = nDividend / nDivisor;
    static_cast<void>(nQuotient);
}

__attribute__((noinline)) DWORD ExhaustStack(DWORD dwDepth)
{
    volatile DWORD frame[64] = {dwDepth};
    // The condition only keeps the compilers from warning of a recursion without end.
    return dwDepth == 0xFFFFFFFF ? 0 : ExhaustStack(dwDepth + 1) + frame[0];
}

} // namespace

bool CanFail(StandinFailure failure)
{
    return failure != StandinFailure::StructuredException || StructuredExceptions::AreAvailable();
}

void Fail(StandinFailure failure, DWORD dwCode)
{
    switch (failure) {
    case StandinFailure::None:
        break;
    case StandinFailure::ReadNull:
        ReadNull();
        break;
    case StandinFailure::DivideByZero:
        DivideByZero();
        break;
    case StandinFailure::ExhaustStack:
        ExhaustStack(0);
        break;
    case StandinFailure::Throw:
        FaultGuard::RaiseForeignException();
    case StandinFailure::StructuredException:
        StructuredExceptions::Raise(dwCode);
        break;
    case StandinFailure::ThrowOwn:
        throw 1;
    case StandinFailure::ExitProcess:
        ExitProcess(0);
    }
}
