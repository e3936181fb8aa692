#include <windows.h>

#include <unistd.h>

DWORD WINAPI GetCurrentThreadId() noexcept
{
    return static_cast<DWORD>(gettid());
}
