#include "Scenario.h"

// Frames that handle structured exceptions, as parts of Winlogon and of plugins written in C do.

extern "C" unsigned long _exception_code();

constexpr int EXCEPTION_EXECUTE_HANDLER = 1;

ABI_SCENARIO(SwallowAsStructured)
{
    __try
    {
        pfnOperation(pContext);
    } __except (EXCEPTION_EXECUTE_HANDLER)
    {
        pReport->dwCode = _exception_code();
        ++pReport->nCaught;
    }
}

ABI_SCENARIO(EndWithFinally)
{
    ++pReport->nEntered;
    __try
    {
        pfnOperation(pContext);
    } __finally
    {
        ++pReport->nDestroyed;
    }
}
