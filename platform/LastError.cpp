#include <windows.h>

namespace {

thread_local DWORD g_dwLastError;

} // namespace

DWORD WINAPI GetLastError() noexcept
{
    return g_dwLastError;
}

void WINAPI SetLastError(DWORD dwError) noexcept
{
    g_dwLastError = dwError;
}
