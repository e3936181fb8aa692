#pragma once

#include "win32/files.h"
#include "win32/types.h"

// Named pipes between the processes of one user: byte pipes with one instance. A name is a socket in a
// private directory (see PipeDirectory.h). Default sizes, time-outs and security attributes are ignored.
//
// Unlike on Windows, the client can still read what the server wrote before it disconnected. Then it gets
// ERROR_BROKEN_PIPE, also where Windows says ERROR_PIPE_NOT_CONNECTED.

#define PIPE_ACCESS_INBOUND 0x00000001
#define PIPE_ACCESS_OUTBOUND 0x00000002
#define PIPE_ACCESS_DUPLEX 0x00000003
#define WRITE_OWNER 0x00080000
#define FILE_FLAG_OVERLAPPED 0x40000000

#define PIPE_WAIT 0x00000000
#define PIPE_NOWAIT 0x00000001
#define PIPE_READMODE_BYTE 0x00000000
#define PIPE_READMODE_MESSAGE 0x00000002
#define PIPE_TYPE_BYTE 0x00000000
#define PIPE_TYPE_MESSAGE 0x00000004

#define SECURITY_ANONYMOUS 0x00000000
#define SECURITY_IDENTIFICATION 0x00010000
#define SECURITY_IMPERSONATION 0x00020000
#define SECURITY_SQOS_PRESENT 0x00100000

/// Byte pipes, duplex, with one instance; others fail with ERROR_NOT_SUPPORTED. While a process has the name:
/// ERROR_PIPE_BUSY. The instance listens at once. FILE_FLAG_OVERLAPPED changes FlushFileBuffers only.
HANDLE WINAPI CreateNamedPipeW(LPCWSTR szName, DWORD dwOpenMode, DWORD dwPipeMode, DWORD dwMaxInstances,
                               DWORD cbOutBuffer, DWORD cbInBuffer, DWORD dwDefaultTimeout,
                               LPSECURITY_ATTRIBUTES pSecurity) noexcept;

/// Makes a disconnected instance listen; in non-blocking mode it then returns TRUE at once. Otherwise FALSE:
/// with ERROR_PIPE_LISTENING if the instance was listening before, ERROR_PIPE_CONNECTED with a client,
/// ERROR_NO_DATA when the client has closed its end.
BOOL WINAPI ConnectNamedPipe(HANDLE hPipe, LPOVERLAPPED pOverlapped) noexcept;

BOOL WINAPI DisconnectNamedPipe(HANDLE hPipe) noexcept;

/// The wait mode only: pdwMode has PIPE_WAIT or PIPE_NOWAIT.
BOOL WINAPI SetNamedPipeHandleState(HANDLE hPipe, LPDWORD pdwMode, LPDWORD pcbCollect,
                                    LPDWORD pdwTimeout) noexcept;

BOOL WINAPI PeekNamedPipe(HANDLE hPipe, LPVOID pBuffer, DWORD cbBuffer, LPDWORD pcbRead, LPDWORD pcbAvailable,
                          LPDWORD pcbLeftThisMessage) noexcept;

/// For the server's end: returns when the client has read everything. If that end was made with
/// FILE_FLAG_OVERLAPPED, DisconnectNamedPipe on another thread ends the wait; otherwise DisconnectNamedPipe
/// waits too.
BOOL WINAPI FlushFileBuffers(HANDLE hFile) noexcept;

/// Only marks the thread: see OpenThreadToken. ERROR_CANNOT_IMPERSONATE before anything was read from the
/// client.
BOOL WINAPI ImpersonateNamedPipeClient(HANDLE hPipe) noexcept;
BOOL WINAPI RevertToSelf() noexcept;

#define TOKEN_QUERY 0x0008

/// This thread, for OpenThreadToken.
HANDLE WINAPI GetCurrentThread() noexcept;
/// A handle without further use if the thread impersonates a client; ERROR_NO_TOKEN if it does not.
BOOL WINAPI OpenThreadToken(HANDLE hThread, DWORD dwAccess, BOOL bOpenAsSelf, PHANDLE phToken) noexcept;
