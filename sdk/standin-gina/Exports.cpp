// The 21 entry points, and the one more through which a program drives the GINA.

#include <windows.h>

// The compiler's header declares the entry points as C++ functions; exports need plain names.
extern "C" {
#include <winwlx.h>
}

#include "Arguments.h"

namespace {

/// A GINA that refuses stores nothing through its out-pointers. The version is an exception: a caller that is
/// refused may want to know which version would have been accepted.
bool LeavesValues(const StandinRecord& record)
{
    const LONG nNo = record.call == StandinCall::WlxLoggedOutSAS ? WLX_SAS_ACTION_NONE : FALSE;
    return record.call == StandinCall::WlxNegotiate || record.nResult != nNo;
}

/// Serves one call: records what arrived, does what it was told to do, and stores values through the
/// out-pointers.
template <typename Result, typename... Arguments>
Result Serve(StandinCall call, Arguments... arguments)
{
    static_assert(sizeof...(Arguments) <= STANDIN_MAX_ARGUMENTS);
    CRecord& record = g_Standin.AddRecord(call);
    (Receive(record, arguments), ...);
    g_Standin.Act(record);
    if constexpr (!std::is_void_v<Result>) {
        record.nResult = g_Standin.GetResult(call);
    }
    if (LeavesValues(record)) {
        DWORD dwIndex = 0;
        (Leave(record, dwIndex++, arguments), ...);
    }
    record.bReturned = TRUE;
    if constexpr (!std::is_void_v<Result>) {
        return record.nResult;
    }
}

constexpr StandinInterface INTERFACE = {
    sizeof(StandinInterface),
    Exposed<g_Standin, &CStandin::Reset>::Call,
    Exposed<g_Standin, &CStandin::SetVersion>::Call,
    Exposed<g_Standin, &CStandin::SetResult>::Call,
    Exposed<g_Standin, &CStandin::SetFailure>::Call,
    Exposed<g_Standin, &CStandin::SetHook>::Call,
    Exposed<g_Standin, &CStandin::SetDetachHook>::Call,
    Exposed<g_Standin, &CStandin::GetRecordCount>::Call,
    Exposed<g_Standin, &CStandin::GetRecord>::Call,
};

} // namespace

// clang-format off
#define ENTRY(RESULT, NAME, PARAMETERS, ...) \
    extern "C" RESULT WINAPI NAME PARAMETERS { return Serve<RESULT>(StandinCall::NAME, __VA_ARGS__); }

ENTRY(BOOL, WlxNegotiate, (DWORD dwVersion, PDWORD pdwVersion), dwVersion, CVersionOut{pdwVersion})
ENTRY(BOOL, WlxInitialize, (LPWSTR szWinsta, HANDLE hWlx, PVOID pvReserved, PVOID pFunctions,
      PVOID* ppContext),
      szWinsta, hWlx, pvReserved, pFunctions, ppContext)
ENTRY(VOID, WlxDisplaySASNotice, (PVOID pContext), pContext)
ENTRY(int, WlxLoggedOutSAS, (PVOID pContext, DWORD dwSasType, PLUID pId, PSID pSid, PDWORD pdwOptions,
      PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pInfo, PVOID* ppProfile),
      pContext, dwSasType, pId, pSid, pdwOptions, phToken, pInfo, CProfileOut{ppProfile})
ENTRY(BOOL, WlxActivateUserShell, (PVOID pContext, PWSTR szDesktop, PWSTR szScript, PVOID pEnvironment),
      pContext, szDesktop, szScript, pEnvironment)
ENTRY(int, WlxLoggedOnSAS, (PVOID pContext, DWORD dwSasType, PVOID pReserved), pContext, dwSasType, pReserved)
ENTRY(VOID, WlxDisplayLockedNotice, (PVOID pContext), pContext)
ENTRY(int, WlxWkstaLockedSAS, (PVOID pContext, DWORD dwSasType), pContext, dwSasType)
ENTRY(BOOL, WlxIsLockOk, (PVOID pContext), pContext)
ENTRY(BOOL, WlxIsLogoffOk, (PVOID pContext), pContext)
ENTRY(VOID, WlxLogoff, (PVOID pContext), pContext)
ENTRY(VOID, WlxShutdown, (PVOID pContext, DWORD dwType), pContext, dwType)
ENTRY(BOOL, WlxScreenSaverNotify, (PVOID pContext, BOOL* pSecure), pContext, pSecure)
ENTRY(BOOL, WlxStartApplication, (PVOID pContext, PWSTR szDesktop, PVOID pEnvironment, PWSTR szCommand),
      pContext, szDesktop, pEnvironment, szCommand)
ENTRY(BOOL, WlxNetworkProviderLoad, (PVOID pContext, PWLX_MPR_NOTIFY_INFO pInfo), pContext, pInfo)
ENTRY(BOOL, WlxDisplayStatusMessage, (PVOID pContext, HDESK hDesktop, DWORD dwOptions, PWSTR szTitle,
      PWSTR szMessage),
      pContext, hDesktop, dwOptions, szTitle, szMessage)
ENTRY(BOOL, WlxGetStatusMessage, (PVOID pContext, DWORD* pdwOptions, PWSTR szMessage, DWORD dwSize),
      pContext, pdwOptions, (CStatusOut{szMessage, dwSize}), dwSize)
ENTRY(BOOL, WlxRemoveStatusMessage, (PVOID pContext), pContext)
ENTRY(BOOL, WlxGetConsoleSwitchCredentials, (PVOID pContext, PVOID pCredentials), pContext, pCredentials)
ENTRY(VOID, WlxReconnectNotify, (PVOID pContext), pContext)
ENTRY(VOID, WlxDisconnectNotify, (PVOID pContext), pContext)
// clang-format on

extern "C" const StandinInterface* WINAPI StandinGina()
{
    return &INTERFACE;
}
