#include <cerrno>
#include <ctime>

#include <windows.h>

namespace {

constexpr long NANOSECONDS_PER_MILLISECOND = 1'000'000;

timespec GetTime(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return now;
}

} // namespace

void WINAPI GetLocalTime(LPSYSTEMTIME pTime) noexcept
{
    const timespec now = GetTime(CLOCK_REALTIME);
    tm parts = {};
    localtime_r(&now.tv_sec, &parts);
    pTime->wYear = static_cast<WORD>(parts.tm_year + 1900);
    pTime->wMonth = static_cast<WORD>(parts.tm_mon + 1);
    pTime->wDayOfWeek = static_cast<WORD>(parts.tm_wday);
    pTime->wDay = static_cast<WORD>(parts.tm_mday);
    pTime->wHour = static_cast<WORD>(parts.tm_hour);
    pTime->wMinute = static_cast<WORD>(parts.tm_min);
    pTime->wSecond = static_cast<WORD>(parts.tm_sec);
    pTime->wMilliseconds = static_cast<WORD>(now.tv_nsec / NANOSECONDS_PER_MILLISECOND);
}

DWORD WINAPI GetTickCount() noexcept
{
    const timespec now = GetTime(CLOCK_MONOTONIC);
    return static_cast<DWORD>(now.tv_sec * 1000 + now.tv_nsec / NANOSECONDS_PER_MILLISECOND);
}

void WINAPI Sleep(DWORD dwMilliseconds) noexcept
{
    do {
        timespec rest = {dwMilliseconds / 1000, dwMilliseconds % 1000 * NANOSECONDS_PER_MILLISECOND};
        while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
        }
    } while (dwMilliseconds == INFINITE);
}
