#pragma once

#include "win32/types.h"

// DLLs are shared objects with a Windows name. The loader calls DllMain, if it is exported, as Windows does.

#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3

/// A name without a directory is that of a loaded DLL. Otherwise it is searched for, ignoring case, in the
/// program's directory and the current directory.
HMODULE WINAPI LoadLibraryW(LPCWSTR szFile) noexcept;

#define SEM_FAILCRITICALERRORS 0x0001
#define SEM_NOOPENFILEERRORBOX 0x8000
/// Keeps the mode and changes nothing: no call shows a message box here.
UINT WINAPI SetErrorMode(UINT nMode) noexcept;

BOOL WINAPI FreeLibrary(HMODULE hModule) noexcept;

/// The loaded DLL of that file name, without taking a reference. No directory; null for the program is not
/// supported.
HMODULE WINAPI GetModuleHandleW(LPCWSTR szFile) noexcept;

/// Names only, no ordinals.
FARPROC WINAPI GetProcAddress(HMODULE hModule, LPCSTR szName) noexcept;

/// Null stands for the program.
DWORD WINAPI GetModuleFileNameW(HMODULE hModule, LPWSTR szFile, DWORD cchFile) noexcept;
