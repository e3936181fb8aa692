#include "Scenario.h"

// What plugins do that the processor objects to.

namespace {

volatile int* volatile g_pNull = nullptr;
volatile int g_nZero = 0;

/// A member of a plugin that cannot even be destroyed.
struct CBroken
{
    ~CBroken() { *g_pNull = 1; }
};

} // namespace

ABI_SCENARIO(WriteNull)
{
    const CWitness witness(pReport);
    pfnOperation(pContext);
    *g_pNull = 1;
}

ABI_SCENARIO(DivideByZero)
{
    const CWitness witness(pReport);
    pfnOperation(pContext);
    g_nZero = 1 / g_nZero;
}

ABI_SCENARIO(FaultWhileUnwinding)
{
    const CWitness outer(pReport);
    const CBroken broken;
    pfnOperation(pContext);
}
