// A GINA written by hand that forwards every call to another, and does no more: what the library is measured
// against. With nothing behind it, it answers, and serves as the standard GINA.

#include "WlxInterface.h"

namespace {

HMODULE g_hNext = nullptr;

/// Calls the export of the next GINA; without one the answer is 1, which is TRUE and WLX_SAS_ACTION_LOGON.
template <typename Result, typename... Arguments>
Result Forward(FARPROC& pfnNext, const char* szExport, Arguments... arguments)
{
    if (g_hNext == nullptr) {
        return static_cast<Result>(1);
    }
    if (pfnNext == nullptr) {
        pfnNext = GetProcAddress(g_hNext, szExport);
    }
    return reinterpret_cast<Result(WINAPI*)(Arguments...)>(reinterpret_cast<void (*)()>(pfnNext))(
        arguments...);
}

} // namespace

// clang-format off
#define ENTRY(RESULT, NAME, PARAMETERS, ...) \
    extern "C" RESULT WINAPI NAME PARAMETERS \
    { \
        static FARPROC s_pfnNext = nullptr; \
        return Forward<RESULT>(s_pfnNext, #NAME, __VA_ARGS__); \
    }

ENTRY(BOOL, WlxInitialize, (LPWSTR szWinsta, HANDLE hWlx, PVOID pvReserved, PVOID pFunctions, PVOID* ppContext),
      szWinsta, hWlx, pvReserved, pFunctions, ppContext)
ENTRY(VOID, WlxDisplaySASNotice, (PVOID pContext), pContext)
ENTRY(int, WlxLoggedOutSAS, (PVOID pContext, DWORD dwSasType, PLUID pId, PSID pSid, PDWORD pdwOptions,
      PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pInfo, PVOID* ppProfile),
      pContext, dwSasType, pId, pSid, pdwOptions, phToken, pInfo, ppProfile)
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
      pContext, pdwOptions, szMessage, dwSize)
ENTRY(BOOL, WlxRemoveStatusMessage, (PVOID pContext), pContext)
ENTRY(BOOL, WlxGetConsoleSwitchCredentials, (PVOID pContext, PVOID pCredentials), pContext, pCredentials)
ENTRY(VOID, WlxReconnectNotify, (PVOID pContext), pContext)
ENTRY(VOID, WlxDisconnectNotify, (PVOID pContext), pContext)
// clang-format on

extern "C" BOOL WINAPI WlxNegotiate(DWORD, PDWORD pdwVersion)
{
    *pdwVersion = WLX_VERSION_1_4;
    return TRUE;
}

/// What this GINA forwards to. The caller keeps it loaded.
extern "C" void WINAPI SetNext(HMODULE hNext)
{
    g_hNext = hNext;
}
