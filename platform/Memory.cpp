#include <cstdlib>

#include <windows.h>

#include "Call.h"

using namespace Native;

HLOCAL WINAPI LocalAlloc(UINT uFlags, SIZE_T cbMemory) noexcept
{
    return LastErrorCall<HLOCAL>(PlatformCall::LocalAlloc, nullptr, nullptr, [&] {
        Require((uFlags & ~UINT(LPTR)) == 0, ERROR_INVALID_PARAMETER);
        // Null means failure, so even 0 bytes are allocated.
        const SIZE_T cb = cbMemory != 0 ? cbMemory : 1;
        HLOCAL hMemory = (uFlags & LMEM_ZEROINIT) != 0 ? std::calloc(1, cb) : std::malloc(cb);
        Require(hMemory != nullptr, ERROR_NOT_ENOUGH_MEMORY);
        return hMemory;
    });
}

HLOCAL WINAPI LocalFree(HLOCAL hMemory) noexcept
{
    return LastErrorCall<HLOCAL>(PlatformCall::LocalFree, nullptr, hMemory, [&] {
        std::free(hMemory);
        return nullptr;
    });
}
