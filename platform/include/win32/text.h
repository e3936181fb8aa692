#pragma once

#include "win32/types.h"

// The ANSI code page is 1252, as on a Western Windows. Windows also replaces characters by similar ones
// (a letter with a macron by the bare letter); here they get the default character.

#define CP_ACP 0

#define WC_COMPOSITECHECK 0x00000200
#define WC_DEFAULTCHAR 0x00000040
#define WC_NO_BEST_FIT_CHARS 0x00000400

#define MB_PRECOMPOSED 0x00000001
#define MB_ERR_INVALID_CHARS 0x00000008

/// CP_ACP only. WC_COMPOSITECHECK joins a Latin letter and the accent behind it.
int WINAPI WideCharToMultiByte(UINT uCodePage, DWORD dwFlags, LPCWSTR szWide, int cchWide, LPSTR szAnsi,
                               int cbAnsi, LPCSTR szDefault, LPBOOL pbUsedDefault) noexcept;

/// CP_ACP only.
int WINAPI MultiByteToWideChar(UINT uCodePage, DWORD dwFlags, LPCSTR szAnsi, int cbAnsi, LPWSTR szWide,
                               int cchWide) noexcept;
