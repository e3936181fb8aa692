#pragma once

// What LUMPlugin.h takes from the system's header, for a compiler whose own is not at hand. The types are
// those of 32-bit Windows.

#define WINAPI __stdcall
#define FALSE 0
#define TRUE 1
#define MAX_PATH 260
#define LMEM_FIXED 0
#define ERROR_SUCCESS 0L
#define HKEY_LOCAL_MACHINE ((HKEY)(unsigned long)0x80000002)
#define KEY_READ 0x20019
#define FILE_APPEND_DATA 4
#define FILE_SHARE_READ 1
#define FILE_SHARE_WRITE 2
#define OPEN_ALWAYS 4
#define FILE_ATTRIBUTE_NORMAL 0x80
#define INVALID_HANDLE_VALUE ((HANDLE)(long)-1)
#define CP_ACP 0
#define WC_COMPOSITECHECK 0x200
#define WC_DEFAULTCHAR 0x40
#define TEXT(QUOTED) L##QUOTED

typedef void* PVOID;
typedef void* HANDLE;
typedef void* HLOCAL;
typedef void* PSID;
typedef HANDLE* PHANDLE;
typedef struct HINSTANCE__* HINSTANCE;
typedef struct HDESK__* HDESK;
typedef struct HKEY__* HKEY;
typedef struct _LUID* PLUID;
typedef int BOOL;
typedef unsigned char BYTE;
typedef unsigned short WORD;
typedef long LONG;
typedef unsigned int UINT;
typedef unsigned long DWORD;
typedef unsigned long SIZE_T;
typedef DWORD* PDWORD;
typedef wchar_t WCHAR;
typedef WCHAR* PWSTR;
typedef WCHAR* LPWSTR;

extern "C" __declspec(dllimport) HLOCAL WINAPI LocalAlloc(UINT uFlags, SIZE_T cbMemory);
extern "C" __declspec(dllimport) HLOCAL WINAPI LocalFree(HLOCAL hMemory);

typedef struct
{
    WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
} SYSTEMTIME;

#define SYSTEM_CALL extern "C" __declspec(dllimport)
SYSTEM_CALL LONG WINAPI RegOpenKeyExW(HKEY hKey, const WCHAR* szKey, DWORD dwOptions, DWORD dwAccess,
                                      HKEY* phKey);
SYSTEM_CALL LONG WINAPI RegQueryValueExW(HKEY hKey, const WCHAR* szValue, DWORD* pReserved, DWORD* pdwType,
                                         BYTE* pData, DWORD* pcbData);
SYSTEM_CALL LONG WINAPI RegCloseKey(HKEY hKey);
SYSTEM_CALL HANDLE WINAPI CreateFileW(const WCHAR* szPath, DWORD dwAccess, DWORD dwShareMode, PVOID pSecurity,
                                      DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate);
SYSTEM_CALL BOOL WINAPI WriteFile(HANDLE hFile, const void* pBytes, DWORD cbBytes, DWORD* pcbWritten,
                                  PVOID pOverlapped);
SYSTEM_CALL BOOL WINAPI CloseHandle(HANDLE hObject);
SYSTEM_CALL BOOL WINAPI CreateDirectoryW(const WCHAR* szPath, PVOID pSecurity);
SYSTEM_CALL void WINAPI GetLocalTime(SYSTEMTIME* pTime);
SYSTEM_CALL int WINAPI WideCharToMultiByte(UINT uPage, DWORD dwFlags, const WCHAR* szWide, int cchWide,
                                           char* pBytes, int cbBytes, const char* szDefault, BOOL* pbUsed);
