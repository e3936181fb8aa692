#pragma once

#include "win32/types.h"

#define LMEM_FIXED 0x0000
#define LMEM_ZEROINIT 0x0040
#define LPTR (LMEM_FIXED | LMEM_ZEROINIT)

/// Fixed memory only.
HLOCAL WINAPI LocalAlloc(UINT uFlags, SIZE_T cbMemory) noexcept;
HLOCAL WINAPI LocalFree(HLOCAL hMemory) noexcept;
