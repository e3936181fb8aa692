#include "LUMGinaInterface.h"

#include "Exceptions.h"
#include "Operation.h"
#include "guard/FaultGuard.h"

// The entry points that Winlogon calls. Nothing is ever thrown into Winlogon: any failure, even a processor
// fault of the host, ends as the call's default result.

namespace {

constexpr WCHAR CLASS_NAME[] = TEXT("LUM_GINA_INT");

/// Hands one call to the host. Result is the kind of the call's result: bool, SasAction or void. Without a
/// host it returns the default result.
template <typename Result, typename HostResult, typename... Params, typename... Args>
Result Export(CTracePoint point, HostResult (CLUMGina::*pfnOperation)(Params...), Args... args) noexcept
{
    const COperation op(LUM_GINA_ORIGIN, CLASS_NAME, point);
    const auto call = [&] { return static_cast<Result>((g_pLUMGina->*pfnOperation)(args...)); };
    return op.Run(Absorb<CMessage>(),
                  [&] { return g_pLUMGina != nullptr ? CallWithinHost(call) : FailureResult<Result>(); });
}

} // namespace

BOOL WINAPI WlxNegotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion)
{
    return Export<bool>(TEXT("WlxNegotiate."), &CLUMGina::LUMWlxNegotiate, dwWinlogonVersion, pdwDllVersion);
}

BOOL WINAPI WlxInitialize(LPWSTR lpWinsta, HANDLE hWlx, PVOID pvReserved, PVOID pWinlogonFunctions,
                          PVOID* pWlxContext)
{
    return Export<bool>(TEXT("WlxInitialize."), &CLUMGina::LUMWlxInitialize, lpWinsta, hWlx, pvReserved,
                        pWinlogonFunctions, pWlxContext);
}

void WINAPI WlxDisplaySASNotice(PVOID pWlxContext)
{
    Export<void>(TEXT("WlxDisplaySASNotice."), &CLUMGina::LUMWlxDisplaySASNotice, pWlxContext);
}

int WINAPI WlxLoggedOutSAS(PVOID pWlxContext, DWORD dwSasType, PLUID pAuthenticationId, PSID pLogonSid,
                           PDWORD pdwOptions, PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo,
                           PVOID* pProfile)
{
    return Export<SasAction>(TEXT("WlxLoggedOutSAS."), &CLUMGina::LUMWlxLoggedOutSAS, pWlxContext, dwSasType,
                             pAuthenticationId, pLogonSid, pdwOptions, phToken, pNprNotifyInfo, pProfile);
}

BOOL WINAPI WlxActivateUserShell(PVOID pWlxContext, PWSTR pszDesktopName, PWSTR pszMprLogonScript,
                                 PVOID pEnvironment)
{
    return Export<bool>(TEXT("WlxActivateUserShell."), &CLUMGina::LUMWlxActivateUserShell, pWlxContext,
                        pszDesktopName, pszMprLogonScript, pEnvironment);
}

int WINAPI WlxLoggedOnSAS(PVOID pWlxContext, DWORD dwSasType, PVOID pReserved)
{
    return Export<SasAction>(TEXT("WlxLoggedOnSAS."), &CLUMGina::LUMWlxLoggedOnSAS, pWlxContext, dwSasType,
                             pReserved);
}

void WINAPI WlxDisplayLockedNotice(PVOID pWlxContext)
{
    Export<void>(TEXT("WlxDisplayLockedNotice."), &CLUMGina::LUMWlxDisplayLockedNotice, pWlxContext);
}

int WINAPI WlxWkstaLockedSAS(PVOID pWlxContext, DWORD dwSasType)
{
    return Export<SasAction>(TEXT("WlxWkstaLockedSAS."), &CLUMGina::LUMWlxWkstaLockedSAS, pWlxContext,
                             dwSasType);
}

BOOL WINAPI WlxIsLockOk(PVOID pWlxContext)
{
    return Export<bool>(TEXT("WlxIsLockOk."), &CLUMGina::LUMWlxIsLockOk, pWlxContext);
}

BOOL WINAPI WlxIsLogoffOk(PVOID pWlxContext)
{
    return Export<bool>(TEXT("WlxIsLogoffOk."), &CLUMGina::LUMWlxIsLogoffOk, pWlxContext);
}

void WINAPI WlxLogoff(PVOID pWlxContext)
{
    Export<void>(TEXT("WlxLogoff."), &CLUMGina::LUMWlxLogoff, pWlxContext);
}

void WINAPI WlxShutdown(PVOID pWlxContext, DWORD dwShutdownType)
{
    Export<void>(TEXT("WlxShutdown."), &CLUMGina::LUMWlxShutdown, pWlxContext, dwShutdownType);
}

BOOL WINAPI WlxScreenSaverNotify(PVOID pWlxContext, BOOL* pSecure)
{
    return Export<bool>(TEXT("WlxScreenSaverNotify."), &CLUMGina::LUMWlxScreenSaverNotify, pWlxContext,
                        pSecure);
}

BOOL WINAPI WlxStartApplication(PVOID pWlxContext, PWSTR pszDesktopName, PVOID pEnvironment, PWSTR pszCmdLine)
{
    return Export<bool>(TEXT("WlxStartApplication."), &CLUMGina::LUMWlxStartApplication, pWlxContext,
                        pszDesktopName, pEnvironment, pszCmdLine);
}

BOOL WINAPI WlxNetworkProviderLoad(PVOID pWlxContext, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo)
{
    return Export<bool>(TEXT("WlxNetworkProviderLoad."), &CLUMGina::LUMWlxNetworkProviderLoad, pWlxContext,
                        pNprNotifyInfo);
}

BOOL WINAPI WlxDisplayStatusMessage(PVOID pWlxContext, HDESK hDesktop, DWORD dwOptions, PWSTR pTitle,
                                    PWSTR pMessage)
{
    return Export<bool>(TEXT("WlxDisplayStatusMessage."), &CLUMGina::LUMWlxDisplayStatusMessage, pWlxContext,
                        hDesktop, dwOptions, pTitle, pMessage);
}

BOOL WINAPI WlxGetStatusMessage(PVOID pWlxContext, DWORD* pdwOptions, PWSTR pMessage, DWORD dwBufferSize)
{
    return Export<bool>(TEXT("WlxGetStatusMessage."), &CLUMGina::LUMWlxGetStatusMessage, pWlxContext,
                        pdwOptions, pMessage, dwBufferSize);
}

BOOL WINAPI WlxRemoveStatusMessage(PVOID pWlxContext)
{
    return Export<bool>(TEXT("WlxRemoveStatusMessage."), &CLUMGina::LUMWlxRemoveStatusMessage, pWlxContext);
}

BOOL WINAPI WlxGetConsoleSwitchCredentials(PVOID pWlxContext, PVOID pCredInfo)
{
    return Export<bool>(TEXT("WlxGetConsoleSwitchCredentials."), &CLUMGina::LUMWlxGetConsoleSwitchCredentials,
                        pWlxContext, pCredInfo);
}

void WINAPI WlxReconnectNotify(PVOID pWlxContext)
{
    Export<void>(TEXT("WlxReconnectNotify."), &CLUMGina::LUMWlxReconnectNotify, pWlxContext);
}

void WINAPI WlxDisconnectNotify(PVOID pWlxContext)
{
    Export<void>(TEXT("WlxDisconnectNotify."), &CLUMGina::LUMWlxDisconnectNotify, pWlxContext);
}
