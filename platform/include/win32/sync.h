#pragma once

#include "win32/files.h"
#include "win32/types.h"

// Locks, threads, events and time.

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

constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID pParameter);

DWORD WINAPI GetCurrentThreadId() noexcept;
/// Without creation flags: the thread runs at once.
HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES pSecurity, SIZE_T cbStack, LPTHREAD_START_ROUTINE pfnStart,
                           LPVOID pParameter, DWORD dwCreationFlags, DWORD* pdwThreadId) noexcept;
/// Always fails: here a thread cannot be stopped from outside.
DWORD WINAPI SuspendThread(HANDLE hThread) noexcept;

/// What exit does.
[[noreturn]] void WINAPI ExitProcess(UINT nStatus) noexcept;

/// Events without a name only.
HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES pSecurity, BOOL bManualReset, BOOL bInitialState,
                           LPCWSTR szName) noexcept;
BOOL WINAPI SetEvent(HANDLE hEvent) noexcept;
BOOL WINAPI ResetEvent(HANDLE hEvent) noexcept;

/// Waits for an event, or for a thread to end.
DWORD WINAPI WaitForSingleObject(HANDLE hObject, DWORD dwMilliseconds) noexcept;

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
