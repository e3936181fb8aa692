#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// Types keep the size that 32-bit code expects: DWORD and LONG have 32 bits, WCHAR has 16. Constants have no
// suffix L for the same reason: long is wider here than LONG.

#define VOID void
#define CONST const
#define WINAPI
#define CALLBACK
#define APIENTRY

#define FALSE 0
#define TRUE 1
#define MAX_PATH 260
#define INFINITE 0xFFFFFFFF

using CHAR = char;
using WCHAR = char16_t;
using BYTE = std::uint8_t;
using UCHAR = std::uint8_t;
using WORD = std::uint16_t;
using USHORT = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using ULONG = std::uint32_t;
using LONG = std::int32_t;
using INT = int;
using BOOL = int;
using WINBOOL = int;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;

using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using PBYTE = BYTE*;
using LPBYTE = BYTE*;
using PLONG = LONG*;
using PDWORD = DWORD*;
using LPDWORD = DWORD*;
using LPBOOL = BOOL*;
using PSTR = CHAR*;
using LPSTR = CHAR*;
using LPCSTR = const CHAR*;
using PWSTR = WCHAR*;
using LPWSTR = WCHAR*;
using PCWSTR = const WCHAR*;
using LPCWSTR = const WCHAR*;

using HANDLE = void*;
using PHANDLE = HANDLE*;
using HLOCAL = HANDLE;
using HGLOBAL = HANDLE;
using PSID = void*;

#define INVALID_HANDLE_VALUE reinterpret_cast<HANDLE>(INT_PTR(-1))

// Distinct pointer types, so that one kind of handle is not taken for another.
#define DECLARE_HANDLE(NAME)                                                                                 \
    struct NAME##__;                                                                                         \
    using NAME = NAME##__*
DECLARE_HANDLE(HINSTANCE);
DECLARE_HANDLE(HKEY);
DECLARE_HANDLE(HDESK);
DECLARE_HANDLE(HWND);
using HMODULE = HINSTANCE;
using PHKEY = HKEY*;

using FARPROC = INT_PTR(WINAPI*)();
using DLGPROC = INT_PTR(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);
struct DLGTEMPLATE;
using LPCDLGTEMPLATE = const DLGTEMPLATE*;

struct LUID
{
    DWORD LowPart;
    LONG HighPart;
};
using PLUID = LUID*;

struct FILETIME
{
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
using PFILETIME = FILETIME*;

// Two steps, so that a macro for a text works too.
#define WIN32_WIDE_TEXT(QUOTED) u##QUOTED
#define TEXT(QUOTED) WIN32_WIDE_TEXT(QUOTED)

#define MAKELONG(LOW, HIGH)                                                                                  \
    static_cast<LONG>(static_cast<WORD>(LOW) | static_cast<DWORD>(static_cast<WORD>(HIGH)) << 16)
#define LOWORD(VALUE) static_cast<WORD>(static_cast<DWORD_PTR>(VALUE) & 0xFFFF)
#define HIWORD(VALUE) static_cast<WORD>(static_cast<DWORD_PTR>(VALUE) >> 16 & 0xFFFF)
#define LOBYTE(VALUE) static_cast<BYTE>(static_cast<DWORD_PTR>(VALUE) & 0xFF)
#define HIBYTE(VALUE) static_cast<BYTE>(static_cast<DWORD_PTR>(VALUE) >> 8 & 0xFF)
#define ZeroMemory(TARGET, SIZE) std::memset((TARGET), 0, (SIZE))
#define CopyMemory(TARGET, SOURCE, SIZE) std::memcpy((TARGET), (SOURCE), (SIZE))
