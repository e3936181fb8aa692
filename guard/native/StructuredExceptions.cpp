#include "guard/StructuredExceptions.h"

bool StructuredExceptions::AreAvailable() noexcept
{
    return false;
}

void StructuredExceptions::Raise(DWORD) {}
