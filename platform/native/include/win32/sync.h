#pragma once

#include "win32/types.h"

// Locks, threads and time.

/// May be entered again by the thread that is in it.
struct CRITICAL_SECTION
{
    PVOID Opaque[5];
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION pSection) noexcept;
void WINAPI EnterCriticalSection(LPCRITICAL_SECTION pSection) noexcept;
void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION pSection) noexcept;
void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION pSection) noexcept;

DWORD WINAPI GetCurrentThreadId() noexcept;

struct SYSTEMTIME
{
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
using LPSYSTEMTIME = SYSTEMTIME*;

void WINAPI GetLocalTime(LPSYSTEMTIME pTime) noexcept;

/// Milliseconds since some moment in the past; wraps around after 49.7 days.
DWORD WINAPI GetTickCount() noexcept;
void WINAPI Sleep(DWORD dwMilliseconds) noexcept;
