#pragma once

#include "win32/types.h"

// A registry of the process's own, with HKEY_LOCAL_MACHINE alone. It starts empty; machine/MachineRegistry.h
// loads and saves files. Names keep their case and are compared without it, as far as the letters of Latin-1.
// Security attributes and classes are ignored. No call sets the last error.

using LSTATUS = LONG;
using REGSAM = DWORD;

#define HKEY_LOCAL_MACHINE reinterpret_cast<HKEY>(ULONG_PTR(0x80000002))

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_NOTIFY 0x0010
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_ALL_ACCESS 0xF003F
#define MAXIMUM_ALLOWED 0x02000000

#define REG_OPTION_NON_VOLATILE 0
#define REG_OPTION_VOLATILE 1

#define REG_CREATED_NEW_KEY 1
#define REG_OPENED_EXISTING_KEY 2

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_MULTI_SZ 7

struct SECURITY_ATTRIBUTES;

LSTATUS WINAPI RegOpenKeyExW(HKEY hKey, LPCWSTR szSubKey, DWORD dwOptions, REGSAM samDesired,
                             PHKEY phResult) noexcept;
LSTATUS WINAPI RegCreateKeyExW(HKEY hKey, LPCWSTR szSubKey, DWORD dwReserved, LPWSTR szClass, DWORD dwOptions,
                               REGSAM samDesired, SECURITY_ATTRIBUTES* pSecurity, PHKEY phResult,
                               LPDWORD pdwDisposition) noexcept;
LSTATUS WINAPI RegCloseKey(HKEY hKey) noexcept;
/// Saves the whole registry where MachineRegistry::KeepIn says.
LSTATUS WINAPI RegFlushKey(HKEY hKey) noexcept;
/// The empty path stands for the key itself, which is not deleted: ERROR_CALL_NOT_IMPLEMENTED.
LSTATUS WINAPI RegDeleteKeyW(HKEY hKey, LPCWSTR szSubKey) noexcept;

LSTATUS WINAPI RegQueryValueExW(HKEY hKey, LPCWSTR szValue, LPDWORD pdwReserved, LPDWORD pdwType,
                                LPBYTE pData, LPDWORD pcbData) noexcept;

/// The data is stored as given, whatever its type. Windows looks behind the data for a terminator that the
/// caller forgot to count; this does not.
LSTATUS WINAPI RegSetValueExW(HKEY hKey, LPCWSTR szValue, DWORD dwReserved, DWORD dwType, const BYTE* pData,
                              DWORD cbData) noexcept;
LSTATUS WINAPI RegDeleteValueW(HKEY hKey, LPCWSTR szValue) noexcept;
