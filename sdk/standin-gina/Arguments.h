#pragma once

#include "Standin.h"
#include <winwlx.h>

// What the GINA does with an argument, by its type: Receive records it as it arrives, and Leave stores what
// the GINA gives back through it. If the type does not tell what an argument is for, one of the structures
// below wraps it.

/// Where WlxNegotiate stores the version.
struct CVersionOut
{
    PDWORD pdwVersion;
};

/// Where WlxLoggedOutSAS stores the profile.
struct CProfileOut
{
    PVOID* ppProfile;
};

/// The buffer of WlxGetStatusMessage, of dwSize characters.
struct CStatusOut
{
    PWSTR szMessage;
    DWORD dwSize;
};

inline ULONG_PTR AsValue(CVersionOut argument)
{
    return AsValue(argument.pdwVersion);
}
inline ULONG_PTR AsValue(CProfileOut argument)
{
    return AsValue(argument.ppProfile);
}
inline ULONG_PTR AsValue(CStatusOut argument)
{
    return AsValue(argument.szMessage);
}

template <typename T>
void Receive(CRecord& record, T argument)
{
    record.argument[record.dwArguments++] = AsValue(argument);
}
void Receive(CRecord& record, PWSTR szArgument);

/// Nothing, for what is not an out-pointer.
template <typename T>
void Leave(CRecord&, DWORD, T)
{
}
void Leave(CRecord& record, DWORD dwIndex, CVersionOut argument);
void Leave(CRecord& record, DWORD dwIndex, CProfileOut argument);
void Leave(CRecord& record, DWORD dwIndex, CStatusOut argument);
void Leave(CRecord& record, DWORD dwIndex, PDWORD pdwArgument);
void Leave(CRecord& record, DWORD dwIndex, BOOL* pbArgument);
void Leave(CRecord& record, DWORD dwIndex, PVOID* ppArgument);
void Leave(CRecord& record, DWORD dwIndex, PLUID pArgument);
void Leave(CRecord& record, DWORD dwIndex, PWLX_MPR_NOTIFY_INFO pArgument);
