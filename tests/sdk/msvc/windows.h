#pragma once

// What LUMPlugin.h takes from the system's header, for a compiler whose own is not at hand. The types are
// those of 32-bit Windows.

#define WINAPI __stdcall
#define FALSE 0
#define TRUE 1
#define MAX_PATH 260
#define LMEM_FIXED 0
#define TEXT(QUOTED) L##QUOTED

typedef void* PVOID;
typedef void* HANDLE;
typedef void* HLOCAL;
typedef void* PSID;
typedef HANDLE* PHANDLE;
typedef struct HINSTANCE__* HINSTANCE;
typedef struct HDESK__* HDESK;
typedef struct _LUID* PLUID;
typedef int BOOL;
typedef unsigned int UINT;
typedef unsigned long DWORD;
typedef unsigned long SIZE_T;
typedef DWORD* PDWORD;
typedef wchar_t WCHAR;
typedef WCHAR* PWSTR;
typedef WCHAR* LPWSTR;

extern "C" __declspec(dllimport) HLOCAL WINAPI LocalAlloc(UINT uFlags, SIZE_T cbMemory);
extern "C" __declspec(dllimport) HLOCAL WINAPI LocalFree(HLOCAL hMemory);
