#include "Scenario.h"

// What C++ frames of plugins do when the operation that they call fails.

ABI_SCENARIO(PassThrough)
{
    const CWitness outer(pReport);
    const CWitness inner(pReport);
    pfnOperation(pContext);
}

ABI_SCENARIO(Swallow)
{
    try {
        const CWitness witness(pReport);
        pfnOperation(pContext);
    } catch (...) {
        ++pReport->nCaught;
    }
}

ABI_SCENARIO(CatchAndRethrow)
{
    const CWitness outer(pReport);
    try {
        const CWitness inner(pReport);
        pfnOperation(pContext);
    } catch (...) {
        ++pReport->nCaught;
        throw;
    }
}

/// Calls a second operation, which fails as well, while it handles the failure of the first.
ABI_SCENARIO(RethrowAfterAnother)
{
    try {
        pfnOperation(pContext);
    } catch (...) {
        ++pReport->nCaught;
        Swallow(pfnOperation, pContext, pReport);
        throw;
    }
}

ABI_SCENARIO(CatchAndThrowOwn)
{
    const CWitness outer(pReport);
    try {
        pfnOperation(pContext);
    } catch (...) {
        ++pReport->nCaught;
        throw 5;
    }
}

ABI_SCENARIO(ThrowOwn)
{
    const CWitness witness(pReport);
    pfnOperation(pContext);
    throw 5;
}

ABI_SCENARIO(ThrowAndCatchOwn)
{
    try {
        pfnOperation(pContext);
        throw 5;
    } catch (int nOwn) {
        pReport->nCaught += nOwn == 5;
    }
}
