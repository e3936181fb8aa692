#include "Exceptions.h"
#include "LUMGina.h"
#include "Needed.h"

// The 19 calls that Winlogon drives a GINA with, after negotiation and initialisation.

namespace {

/// The export handles an empty list. Any other failure ends as the default result.
using DispatchHandler =
    Handlers<PassOn<CNoGINAorPluginToCallException>,
             Absorb<CUnexpectedEndOfListException, CNullFunctionHandleException, CUnhandledPluginException>>;

} // namespace

/// Calls one operation of the first object of the list. Passing the call on is the objects' business.
template <typename Result, typename Slot, typename... Args>
Result CLUMGina::CallFirst(Slot pfnOperation, Args... args)
{
    return m_gate.Call([&] {
        CGinaObject* pFirst = nullptr;
        GinaNode* pNode = FindFirst(pFirst);
        return pFirst != nullptr ? static_cast<Result>((pFirst->*pfnOperation)(pNode, args...))
                                 : FailureResult<Result>();
    });
}

/// Moves the cursor to the first node. Returns that node and stores its object in pFirst.
GinaNode* CLUMGina::FindFirst(CGinaObject*& pFirst)
{
    return m_gate.Look([&] {
        RequireGinaObjects();
        m_pGinaObjectList->Begin();
        m_pGinaObjectList->GetItem(pFirst);
        return m_pGinaObjectList->m_pCursor;
    });
}

/// Result is the kind of the call's result: bool, SasAction or void.
template <typename Result, typename Slot, typename... Args>
Result CLUMGina::Dispatch(CTracePoint point, Slot pfnOperation, Args... args)
{
    const COperation op(LUM_GINA_ORIGIN, s_szClass, point);
    return op.Run(DispatchHandler(), [&] { return CallFirst<Result>(pfnOperation, args...); });
}

BOOL CLUMGina::LUMWlxActivateUserShell(PVOID pWlxContext, PWSTR pszDesktopName, PWSTR pszMprLogonScript,
                                       PVOID pEnvironment)
{
    return Dispatch<bool>(TEXT("LUMWlxActivateUserShell"), &CGinaObject::ActivateUserShell, pWlxContext,
                          pszDesktopName, pszMprLogonScript, pEnvironment);
}

void CLUMGina::LUMWlxDisconnectNotify(PVOID pWlxContext)
{
    Dispatch<void>(TEXT("LUMWlxDisconnectNotify"), &CGinaObject::DisconnectNotify, pWlxContext);
}

void CLUMGina::LUMWlxDisplayLockedNotice(PVOID pWlxContext)
{
    Dispatch<void>(TEXT("LUMWlxDisplayLockedNotice"), &CGinaObject::DisplayLockedNotice, pWlxContext);
}

void CLUMGina::LUMWlxDisplaySASNotice(PVOID pWlxContext)
{
    Dispatch<void>(TEXT("LUMWlxDisplaySASNotice"), &CGinaObject::DisplaySASNotice, pWlxContext);
}

BOOL CLUMGina::LUMWlxDisplayStatusMessage(PVOID pWlxContext, HDESK hDesktop, DWORD dwOptions, PWSTR pTitle,
                                          PWSTR pMessage)
{
    return Dispatch<bool>(TEXT("LUMWlxDisplayStatusMessage"), &CGinaObject::DisplayStatusMessage, pWlxContext,
                          hDesktop, dwOptions, pTitle, pMessage);
}

BOOL CLUMGina::LUMWlxGetConsoleSwitchCredentials(PVOID pWlxContext, PVOID pCredInfo)
{
    return Dispatch<bool>(TEXT("LUMWlxGetConsoleSwitchCredentials"),
                          &CGinaObject::GetConsoleSwitchCredentials, pWlxContext, pCredInfo);
}

BOOL CLUMGina::LUMWlxGetStatusMessage(PVOID pWlxContext, DWORD* pdwOptions, PWSTR pMessage,
                                      DWORD dwBufferSize)
{
    return Dispatch<bool>(TEXT("LUMWlxGetStatusMessage"), &CGinaObject::GetStatusMessage, pWlxContext,
                          pdwOptions, pMessage, dwBufferSize);
}

BOOL CLUMGina::LUMWlxIsLockOk(PVOID pWlxContext)
{
    return Dispatch<bool>(TEXT("LUMWlxIsLockOk"), &CGinaObject::IsLockOk, pWlxContext);
}

BOOL CLUMGina::LUMWlxIsLogoffOk(PVOID pWlxContext)
{
    return Dispatch<bool>(TEXT("LUMWlxIsLogoffOk"), &CGinaObject::IsLogoffOk, pWlxContext);
}

int CLUMGina::LUMWlxLoggedOnSAS(PVOID pWlxContext, DWORD dwSasType, PVOID pReserved)
{
    return Dispatch<SasAction>(TEXT("LUMWlxLoggedOnSAS"), &CGinaObject::LoggedOnSAS, pWlxContext, dwSasType,
                               pReserved);
}

int CLUMGina::LUMWlxLoggedOutSAS(PVOID pWlxContext, DWORD dwSasType, PLUID pAuthenticationId, PSID pLogonSid,
                                 PDWORD pdwOptions, PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo,
                                 PVOID* pProfile)
{
    return Dispatch<SasAction>(TEXT("LUMWlxLoggedOutSAS"), &CGinaObject::LoggedOutSAS, pWlxContext, dwSasType,
                               pAuthenticationId, pLogonSid, pdwOptions, phToken, pNprNotifyInfo, pProfile);
}

void CLUMGina::LUMWlxLogoff(PVOID pWlxContext)
{
    Dispatch<void>(TEXT("LUMWlxLogoff"), &CGinaObject::Logoff, pWlxContext);
}

BOOL CLUMGina::LUMWlxNetworkProviderLoad(PVOID pWlxContext, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo)
{
    return Dispatch<bool>(TEXT("LUMWlxNetworkProviderLoad"), &CGinaObject::NetworkProviderLoad, pWlxContext,
                          pNprNotifyInfo);
}

void CLUMGina::LUMWlxReconnectNotify(PVOID pWlxContext)
{
    Dispatch<void>(TEXT("LUMWlxReconnectNotify"), &CGinaObject::ReconnectNotify, pWlxContext);
}

BOOL CLUMGina::LUMWlxRemoveStatusMessage(PVOID pWlxContext)
{
    return Dispatch<bool>(TEXT("LUMWlxRemoveStatusMessage"), &CGinaObject::RemoveStatusMessage, pWlxContext);
}

BOOL CLUMGina::LUMWlxScreenSaverNotify(PVOID pWlxContext, BOOL* pSecure)
{
    return Dispatch<bool>(TEXT("LUMWlxScreenSaverNotify"), &CGinaObject::ScreenSaverNotify, pWlxContext,
                          pSecure);
}

void CLUMGina::LUMWlxShutdown(PVOID pWlxContext, DWORD dwShutdownType)
{
    const COperation op(LUM_GINA_ORIGIN, s_szClass, TEXT("LUMWlxShutdown"));
    op.Run(DispatchHandler(), [&] {
        Needed(m_pLUMRegistry).SetEnabled(0);
        CallFirst<void>(&CGinaObject::Shutdown, pWlxContext, dwShutdownType);
        StopThreads();
        // One that is missing fails the call, now that the other has been stopped.
        Needed(m_pLUMPipeThreadObject);
        Needed(m_pLUMRegMonitorThreadObject);
    });
}

BOOL CLUMGina::LUMWlxStartApplication(PVOID pWlxContext, PWSTR pszDesktopName, PVOID pEnvironment,
                                      PWSTR pszCmdLine)
{
    return Dispatch<bool>(TEXT("LUMWlxStartApplication"), &CGinaObject::StartApplication, pWlxContext,
                          pszDesktopName, pEnvironment, pszCmdLine);
}

int CLUMGina::LUMWlxWkstaLockedSAS(PVOID pWlxContext, DWORD dwSasType)
{
    return Dispatch<SasAction>(TEXT("LUMWlxWkstaLockedSAS"), &CGinaObject::WkstaLockedSAS, pWlxContext,
                               dwSasType);
}
