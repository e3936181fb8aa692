#include "Scenario.h"

// What plugins do that the processor objects to.

namespace {

void WriteNullInFunction()
{
    volatile int* volatile pNull = nullptr;
    *pNull = 1;
}

void DivideByZeroInFunction()
{
    volatile int nDividend = 100;
    volatile int nDivisor = 0;
    nDividend = nDividend / nDivisor;
}

// Called through pointers, so that the compiler must reckon with all that they may do.
void (*volatile g_pfnWriteNull)() = WriteNullInFunction;
void (*volatile g_pfnDivideByZero)() = DivideByZeroInFunction;

/// A member of a plugin that cannot even be destroyed.
struct CBroken
{
    ~CBroken() noexcept(false) { g_pfnWriteNull(); }
};

} // namespace

ABI_SCENARIO(WriteNull)
{
    const CWitness witness(pReport);
    pfnOperation(pContext);
    g_pfnWriteNull();
}

ABI_SCENARIO(DivideByZero)
{
    const CWitness witness(pReport);
    pfnOperation(pContext);
    g_pfnDivideByZero();
}

ABI_SCENARIO(FaultWhileUnwinding)
{
    const CBroken broken;
    const CWitness witness(pReport);
    pfnOperation(pContext);
}
