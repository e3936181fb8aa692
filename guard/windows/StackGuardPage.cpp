#include "StackGuardPage.h"

#include <windows.h>

namespace FaultGuard {

// The C runtime of Windows 2000 has no function for this.
void RestoreStackGuardPage() noexcept
{
    constexpr SIZE_T cbPage = 4096;
    BYTE* const pInUse = static_cast<BYTE*>(__builtin_frame_address(0));
    MEMORY_BASIC_INFORMATION region = {};
    if (VirtualQuery(pInUse, &region, sizeof(region)) == 0) {
        return;
    }
    // The lowest page of a stack is never used. The one above it is where an overflow is handled.
    BYTE* pPage = static_cast<BYTE*>(region.AllocationBase) + 2 * cbPage;
    if (VirtualQuery(pPage, &region, sizeof(region)) != 0 && region.State != MEM_COMMIT) {
        pPage = static_cast<BYTE*>(region.BaseAddress) + region.RegionSize;
    }
    if (pPage + 2 * cbPage < pInUse) {
        DWORD dwProtection = 0;
        VirtualProtect(pPage, cbPage, PAGE_READWRITE | PAGE_GUARD, &dwProtection);
    }
}

} // namespace FaultGuard
