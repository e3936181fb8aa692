#pragma once

#include "win32/types.h"

// Plain files and directories. A path may have either separator. Otherwise it is a path of this system: UTF-8
// on disk, case-sensitive, without drive letters.

#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define FILE_APPEND_DATA 0x00000004

#define FILE_SHARE_READ 0x00000001
#define FILE_SHARE_WRITE 0x00000002
#define FILE_SHARE_DELETE 0x00000004

#define CREATE_NEW 1
#define CREATE_ALWAYS 2
#define OPEN_EXISTING 3
#define OPEN_ALWAYS 4
#define TRUNCATE_EXISTING 5

#define FILE_ATTRIBUTE_DIRECTORY 0x00000010
#define FILE_ATTRIBUTE_NORMAL 0x00000080

#define FILE_BEGIN 0
#define FILE_CURRENT 1
#define FILE_END 2
#define INVALID_SET_FILE_POINTER 0xFFFFFFFFu

struct SECURITY_ATTRIBUTES
{
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

struct OVERLAPPED;
using LPOVERLAPPED = OVERLAPPED*;

/// Security attributes are ignored.
BOOL WINAPI CreateDirectoryW(LPCWSTR szPath, LPSECURITY_ATTRIBUTES pSecurity) noexcept;

/// A name of \\.\pipe\ opens a pipe (see pipes.h), any other name a file. dwAccess: GENERIC_READ,
/// GENERIC_WRITE or both, or FILE_APPEND_DATA alone. With that each write goes to the end, wherever the file
/// pointer is. Sharing is kept among the handles of this process. Attributes and flags are ignored.
HANDLE WINAPI CreateFileW(LPCWSTR szPath, DWORD dwAccess, DWORD dwShareMode, LPSECURITY_ATTRIBUTES pSecurity,
                          DWORD dwDisposition, DWORD dwFlags, HANDLE hTemplate) noexcept;
DWORD WINAPI SetFilePointer(HANDLE hFile, LONG lDistance, PLONG plDistanceHigh, DWORD dwMethod) noexcept;

/// Overlapped transfer fails with ERROR_NOT_SUPPORTED.
BOOL WINAPI ReadFile(HANDLE hFile, LPVOID pBuffer, DWORD cbBuffer, LPDWORD pcbRead,
                     LPOVERLAPPED pOverlapped) noexcept;
BOOL WINAPI WriteFile(HANDLE hFile, LPCVOID pBuffer, DWORD cbBuffer, LPDWORD pcbWritten,
                      LPOVERLAPPED pOverlapped) noexcept;

enum GET_FILEEX_INFO_LEVELS
{
    GetFileExInfoStandard,
};

struct WIN32_FILE_ATTRIBUTE_DATA
{
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
};

/// Size and time of the last write; the times before it are 0.
BOOL WINAPI GetFileAttributesExW(LPCWSTR szPath, GET_FILEEX_INFO_LEVELS level, LPVOID pInfo) noexcept;

/// Looks where LoadLibraryW looks, whatever szPath and szExtension say.
DWORD WINAPI SearchPathW(LPCWSTR szPath, LPCWSTR szFile, LPCWSTR szExtension, DWORD cchBuffer,
                         LPWSTR szBuffer, LPWSTR* pszFilePart) noexcept;

/// For handles of every kind, keys included.
BOOL WINAPI CloseHandle(HANDLE hObject) noexcept;
