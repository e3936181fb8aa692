#include "GinaStandardObject.h"

#include "Exceptions.h"
#include "Operation.h"

CGinaStandardObject::CGinaStandardObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance,
                                         const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion,
                                         DWORD dwUsingWlxVersion)
    : CGinaObject(szAPPArg, szMTMArg, hInstance, szGinaDLLName, dwUsingLUMVersion, dwUsingWlxVersion)
{
    const CConstructionTrace trace(*this, s_szClass);
    try {
        Hook();
    } catch (...) {
        FreeGinaDLL();
        throw;
    }
}

CGinaStandardObject::~CGinaStandardObject()
{
    const CDestructionTrace trace(*this, s_szClass);
    FreeGinaDLL();
}

void* CGinaStandardObject::DeletingDestructor(DWORD dwFlags)
{
    void* pMemory = this;
    this->~CGinaStandardObject();
    if ((dwFlags & 1) != 0) {
        ::operator delete(pMemory);
    }
    return pMemory;
}

void CGinaStandardObject::Hook()
{
    const COperation op(*this, s_szClass, TEXT("Hook"));
    const auto onException = [](const COperation&) {
        if (IsHandling<CUnableToLoadDLLException>() || IsHandling<CUnableToLoadDLLFunctionException>() ||
            IsHandling<CFailedGinaNegotiationsException>()) {
            throw;
        }
        throw CUnhandledExceptionException(LUM_GINA_ORIGIN);
    };
    op.Run(onException, [this] {
        LoadGinaDLL();
        Resolve(m_WlxNegotiate);
        NegotiateVersion();
        ResolveAll(m_Exports);
    });
}

void CGinaStandardObject::NegotiateVersion()
{
    const DWORD dwOffered = GetPluginInfo().m_dwWlxVersion;
    DWORD dwAnswer = dwOffered;
    const BOOL bAccepted = Call(m_WlxNegotiate, dwOffered, &dwAnswer);
    GetPluginInfo().m_dwWlxVersion = dwAnswer;
    if (bAccepted == FALSE) {
        throw CFailedGinaNegotiationsException(LUM_GINA_ORIGIN, 0);
    }
}

template <typename Result, typename Function, typename... Args>
Result CGinaStandardObject::CallExport(const CGinaExport<Function>& function, Args... args) const
{
    if constexpr (std::is_same_v<Result, bool>) {
        return Call(function, args...) != FALSE;
    } else {
        return Call(function, args...);
    }
}

/// A chained operation: the GINA is the last in the list, or is not called. What it has not got to
/// have is passed over.
template <typename Result, typename Function, typename... Args>
Result CGinaStandardObject::Chain(CTracePoint point, const CGinaExport<Function>& function, GinaNode* pNode,
                                  Args... args)
{
    return RunOperation<CUnexpectedGinaException, CNullFunctionHandleException>(
        s_szClass, point, [&]() -> Result {
            if (pNode->pNext != nullptr) {
                throw CUnexpectedGinaException(LUM_GINA_ORIGIN, GetGinaDLLName(), point.where);
            }
            if (!function.IsResolved() && function.m_missing == Missing::Tolerated) {
                CNullFunctionHandleException(LUM_GINA_ORIGIN, GetGinaDLLName(), point.where);
                return Result();
            }
            return CallExport<Result>(function, args...);
        });
}

template <typename Result, typename Function, typename... Args>
Result CGinaStandardObject::CallUnchained(CTracePoint point, const CGinaExport<Function>& function, Args... args)
{
    return RunOperation<CUnexpectedGinaException, CNullFunctionHandleException>(
        s_szClass, point, [&] { return CallExport<Result>(function, args...); });
}

bool CGinaStandardObject::ActivateUserShell(GinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName,
                                            PWSTR pszMprLogonScript, PVOID pEnvironment)
{
    return Chain<bool>(TEXT("ActivateUserShell"), m_WlxActivateUserShell, pNode, pWlxContext, pszDesktopName,
                       pszMprLogonScript, pEnvironment);
}

void CGinaStandardObject::DisconnectNotify(GinaNode* pNode, PVOID pWlxContext)
{
    Chain<void>(TEXT("DisconnectNotify"), m_WlxDisconnectNotify, pNode, pWlxContext);
}

void CGinaStandardObject::DisplayLockedNotice(GinaNode* pNode, PVOID pWlxContext)
{
    Chain<void>(TEXT("DisplayLockedNotice"), m_WlxDisplayLockedNotice, pNode, pWlxContext);
}

void CGinaStandardObject::DisplaySASNotice(GinaNode* pNode, PVOID pWlxContext)
{
    Chain<void>(TEXT("DisplaySASNotice"), m_WlxDisplaySASNotice, pNode, pWlxContext);
}

bool CGinaStandardObject::DisplayStatusMessage(GinaNode* pNode, PVOID pWlxContext, HDESK hDesktop,
                                               DWORD dwOptions, PWSTR pTitle, PWSTR pMessage)
{
    return Chain<bool>(TEXT("DisplayStatusMessage"), m_WlxDisplayStatusMessage, pNode, pWlxContext, hDesktop,
                       dwOptions, pTitle, pMessage);
}

void CGinaStandardObject::DynamicUnload()
{
    // A standard GINA stays while the system runs, and has no export to be told otherwise.
    RunOperation(s_szClass, TEXT("DynamicUnload"), [] {});
}

bool CGinaStandardObject::GetConsoleSwitchCredentials(GinaNode* pNode, PVOID pWlxContext, PVOID pCredInfo)
{
    return Chain<bool>(TEXT("GetConsoleSwitchCredentials"), m_WlxGetConsoleSwitchCredentials, pNode,
                       pWlxContext, pCredInfo);
}

bool CGinaStandardObject::GetStatusMessage(GinaNode* pNode, PVOID pWlxContext, DWORD* pdwOptions,
                                           PWSTR pMessage, DWORD dwBufferSize)
{
    return Chain<bool>(TEXT("GetStatusMessage"), m_WlxGetStatusMessage, pNode, pWlxContext, pdwOptions,
                       pMessage, dwBufferSize);
}

bool CGinaStandardObject::Initialize(CLUMObject*, DWORD, LPWSTR lpWinsta, HANDLE hWlx, PVOID pvReserved,
                                     PVOID pWinlogonFunctions, PVOID* pWlxContext, DWORD, DWORD)
{
    return CallUnchained<bool>(TEXT("Initialize"), m_WlxInitialize, lpWinsta, hWlx, pvReserved,
                               pWinlogonFunctions, pWlxContext);
}

bool CGinaStandardObject::IsLockOk(GinaNode* pNode, PVOID pWlxContext)
{
    return Chain<bool>(TEXT("IsLockOk"), m_WlxIsLockOk, pNode, pWlxContext);
}

bool CGinaStandardObject::IsLogoffOk(GinaNode* pNode, PVOID pWlxContext)
{
    return Chain<bool>(TEXT("IsLogoffOk"), m_WlxIsLogoffOk, pNode, pWlxContext);
}

int CGinaStandardObject::LoggedOnSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PVOID pReserved)
{
    return Chain<int>(TEXT("LoggedOnSAS"), m_WlxLoggedOnSAS, pNode, pWlxContext, dwSasType, pReserved);
}

int CGinaStandardObject::LoggedOutSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType,
                                      PLUID pAuthenticationId, PSID pLogonSid, PDWORD pdwOptions,
                                      PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo, PVOID* pProfile)
{
    return Chain<int>(TEXT("LoggedOutSAS"), m_WlxLoggedOutSAS, pNode, pWlxContext, dwSasType,
                      pAuthenticationId, pLogonSid, pdwOptions, phToken, pNprNotifyInfo, pProfile);
}

void CGinaStandardObject::Logoff(GinaNode* pNode, PVOID pWlxContext)
{
    Chain<void>(TEXT("Logoff"), m_WlxLogoff, pNode, pWlxContext);
}

bool CGinaStandardObject::Negotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion, CGinaPluginInfo*)
{
    return CallUnchained<bool>(TEXT("Negotiate"), m_WlxNegotiate, dwWinlogonVersion, pdwDllVersion);
}

bool CGinaStandardObject::NetworkProviderLoad(GinaNode* pNode, PVOID pWlxContext,
                                              PWLX_MPR_NOTIFY_INFO pNprNotifyInfo)
{
    return Chain<bool>(TEXT("NetworkProviderLoad"), m_WlxNetworkProviderLoad, pNode, pWlxContext,
                       pNprNotifyInfo);
}

bool CGinaStandardObject::QueryPlugin(CGinaPluginInfo*, DWORD, DWORD, DWORD)
{
    return RunOperation(s_szClass, TEXT("QueryPlugin"), [] { return false; });
}

bool CGinaStandardObject::QueryPluginInfo(CGinaPluginInfo* pPluginInfo)
{
    return CalledFromDLL([&] {
        const COperation op(*this, s_szClass, TEXT("QueryPluginInfo"));
        return op.Run(Absorb<>(), [&] {
            *pPluginInfo = GetPluginInfo();
            return true;
        });
    });
}

void CGinaStandardObject::ReconnectNotify(GinaNode* pNode, PVOID pWlxContext)
{
    Chain<void>(TEXT("ReconnectNotify"), m_WlxReconnectNotify, pNode, pWlxContext);
}

bool CGinaStandardObject::RemoveStatusMessage(GinaNode* pNode, PVOID pWlxContext)
{
    return Chain<bool>(TEXT("RemoveStatusMessage"), m_WlxRemoveStatusMessage, pNode, pWlxContext);
}

bool CGinaStandardObject::ScreenSaverNotify(GinaNode* pNode, PVOID pWlxContext, BOOL* pSecure)
{
    return Chain<bool>(TEXT("ScreenSaverNotify"), m_WlxScreenSaverNotify, pNode, pWlxContext, pSecure);
}

void CGinaStandardObject::Shutdown(GinaNode* pNode, PVOID pWlxContext, DWORD dwShutdownType)
{
    Chain<void>(TEXT("Shutdown"), m_WlxShutdown, pNode, pWlxContext, dwShutdownType);
}

bool CGinaStandardObject::StartApplication(GinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName,
                                           PVOID pEnvironment, PWSTR pszCmdLine)
{
    return Chain<bool>(TEXT("StartApplication"), m_WlxStartApplication, pNode, pWlxContext, pszDesktopName,
                       pEnvironment, pszCmdLine);
}

int CGinaStandardObject::WkstaLockedSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType)
{
    return Chain<int>(TEXT("WkstaLockedSAS"), m_WlxWkstaLockedSAS, pNode, pWlxContext, dwSasType);
}
