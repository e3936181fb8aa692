#include "Scenario.h"

// Frames that handle structured exceptions, as parts of Winlogon and of plugins written in C do.

extern "C" unsigned long _exception_code();

namespace {

constexpr int HANDLE_IT = 1;
constexpr int CONTINUE_IT = -1;

} // namespace

ABI_SCENARIO(SwallowAsStructured)
{
    __try {
        pfnOperation(pContext);
    } __except (HANDLE_IT) {
        pReport->dwCode = _exception_code();
        ++pReport->nCaught;
    }
}

ABI_SCENARIO(ContinueAfterException)
{
    __try {
        pfnOperation(pContext);
    } __except (pReport->dwCode = _exception_code(), CONTINUE_IT) {
        ++pReport->nCaught;
    }
}

ABI_SCENARIO(EndWithFinally)
{
    ++pReport->nEntered;
    __try {
        pfnOperation(pContext);
    } __finally {
        ++pReport->nDestroyed;
    }
}
