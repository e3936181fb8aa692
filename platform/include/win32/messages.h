#pragma once

#include "win32/types.h"

// The messages of a thread, as far as a thread without windows has any.

#define WM_NULL 0x0000
#define WM_QUIT 0x0012
#define WM_TIMER 0x0113
#define WM_APP 0x8000

#define PM_NOREMOVE 0x0000
#define PM_REMOVE 0x0001

#define QS_ALLINPUT 0x04FF

struct POINT
{
    LONG x;
    LONG y;
};

struct MSG
{
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
using LPMSG = MSG*;

using TIMERPROC = void(CALLBACK*)(HWND hWindow, UINT nMessage, UINT_PTR nTimer, DWORD dwTime);

/// A thread can get messages once it has looked for one itself, or waited for one.
BOOL WINAPI PostThreadMessageW(DWORD dwThreadId, UINT nMessage, WPARAM wParam, LPARAM lParam) noexcept;
/// Any message, without a filter.
BOOL WINAPI PeekMessageW(LPMSG pMessage, HWND hWindow, UINT nFirst, UINT nLast, UINT nRemove) noexcept;
/// Calls the procedure that a WM_TIMER carries, and lets an exception of it through.
LRESULT WINAPI DispatchMessageW(const MSG* pMessage);
/// Waits for any one of the objects, or for any message that has come since the thread looked last.
DWORD WINAPI MsgWaitForMultipleObjects(DWORD dwCount, const HANDLE* phObjects, BOOL bWaitAll,
                                       DWORD dwMilliseconds, DWORD dwWakeMask) noexcept;
