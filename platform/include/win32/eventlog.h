#pragma once

#include "win32/types.h"

// The event log is a file here: events.log in the directory of the pipes, one line in UTF-8 for each event:
//
//     TYPE IDENTIFIER SOURCE: TEXT | TEXT
//
// where TYPE is the number below. Categories, users and data are ignored.

#define EVENTLOG_ERROR_TYPE 1
#define EVENTLOG_WARNING_TYPE 2
#define EVENTLOG_INFORMATION_TYPE 4

/// This machine only: no szServer.
HANDLE WINAPI RegisterEventSourceW(LPCWSTR szServer, LPCWSTR szSource) noexcept;
BOOL WINAPI ReportEventW(HANDLE hSource, WORD wType, WORD wCategory, DWORD dwEvent, PSID pUser, WORD wTexts,
                         DWORD cbData, LPCWSTR* pszTexts, LPVOID pData) noexcept;
BOOL WINAPI DeregisterEventSource(HANDLE hSource) noexcept;
