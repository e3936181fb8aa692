#include "guard/StructuredExceptions.h"

bool StructuredExceptions::AreAvailable() noexcept
{
    return true;
}

void StructuredExceptions::Raise(DWORD dwCode)
{
    RaiseException(dwCode, 0, 0, nullptr);
}
