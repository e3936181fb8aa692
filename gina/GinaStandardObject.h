#pragma once

#include "ChainedGinaObject.h"
#include "Exceptions.h"

/// A standard GINA: a DLL with the Wlx exports, and the end of the chain.
///
/// It refuses a call in which another object follows it. Four exports may be missing (their operations
/// then do nothing), the others must be there as far as the negotiated version has them.
class CGinaStandardObject final : public CChainedGinaObject<CGinaStandardObject>
{
public:
    /// Loads the DLL, negotiates with it and resolves its exports; arguments as for CGinaObject. Throws
    /// what CGinaObject's constructor throws, CUnableToLoadDLLException, CUnableToLoadDLLFunctionException,
    /// CFailedGinaNegotiationsException, or CUnhandledExceptionException for anything else, a fault in
    /// the DLL included. The DLL is freed again then.
    CGinaStandardObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance,
                        const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion, DWORD dwUsingWlxVersion);
    ~CGinaStandardObject();

    void DynamicUnload() override;
    bool Initialize(CLUMObject* pLUMObject, DWORD dwInstanceCount, LPWSTR lpWinsta, HANDLE hWlx,
                    PVOID pvReserved, PVOID pWinlogonFunctions, PVOID* pWlxContext, DWORD dwLoadFlag1,
                    DWORD dwLoadFlag2) override;
    bool Negotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion, CGinaPluginInfo* pPluginInfo) override;
    bool QueryPlugin(CGinaPluginInfo* pPluginInfo, DWORD dwQueryParam1, DWORD dwQueryParam2,
                     DWORD dwQueryParam3) override;
    bool QueryPluginInfo(CGinaPluginInfo* pPluginInfo) override;

private:
    friend class CChainedGinaObject;

    static constexpr const WCHAR* s_szClass = TEXT("CGinaStandardObject");

    void Hook();
    void NegotiateVersion();

    template <typename Result, typename Function, typename... Args>
    Result Chain(CTracePoint point, const CGinaExport<Function>& function, GinaNode* pNode, Args... args);
    template <typename Result, typename Function, typename... Args>
    Result CallUnchained(CTracePoint point, const CGinaExport<Function>& function, Args... args);

    // In the order in which they are resolved.
    CExportTable m_Exports;
    CGinaExport<decltype(WlxNegotiate)> m_Negotiate{m_Exports, "WlxNegotiate"};
    CGinaExport<decltype(WlxInitialize)> m_Initialize{m_Exports, "WlxInitialize"};
    CGinaExport<decltype(WlxDisplaySASNotice)> m_DisplaySASNotice{m_Exports, "WlxDisplaySASNotice"};
    CGinaExport<decltype(WlxLoggedOutSAS)> m_LoggedOutSAS{m_Exports, "WlxLoggedOutSAS"};
    CGinaExport<decltype(WlxActivateUserShell)> m_ActivateUserShell{m_Exports, "WlxActivateUserShell"};
    CGinaExport<decltype(WlxLoggedOnSAS)> m_LoggedOnSAS{m_Exports, "WlxLoggedOnSAS"};
    CGinaExport<decltype(WlxDisplayLockedNotice)> m_DisplayLockedNotice{m_Exports, "WlxDisplayLockedNotice"};
    CGinaExport<decltype(WlxIsLockOk)> m_IsLockOk{m_Exports, "WlxIsLockOk"};
    CGinaExport<decltype(WlxWkstaLockedSAS)> m_WkstaLockedSAS{m_Exports, "WlxWkstaLockedSAS"};
    CGinaExport<decltype(WlxIsLogoffOk)> m_IsLogoffOk{m_Exports, "WlxIsLogoffOk"};
    CGinaExport<decltype(WlxLogoff)> m_Logoff{m_Exports, "WlxLogoff"};
    CGinaExport<decltype(WlxShutdown)> m_Shutdown{m_Exports, "WlxShutdown"};
    CGinaExport<decltype(WlxStartApplication)> m_StartApplication{m_Exports, "WlxStartApplication",
                                                                  WLX_VERSION_1_0, Missing::Tolerated};
    CGinaExport<decltype(WlxScreenSaverNotify)> m_ScreenSaverNotify{m_Exports, "WlxScreenSaverNotify",
                                                                    WLX_VERSION_1_0, Missing::Tolerated};
    CGinaExport<decltype(WlxNetworkProviderLoad)> m_NetworkProviderLoad{m_Exports, "WlxNetworkProviderLoad",
                                                                        WLX_VERSION_1_2};
    CGinaExport<decltype(WlxDisplayStatusMessage)> m_DisplayStatusMessage{
        m_Exports, "WlxDisplayStatusMessage", WLX_VERSION_1_2};
    CGinaExport<decltype(WlxGetStatusMessage)> m_GetStatusMessage{m_Exports, "WlxGetStatusMessage",
                                                                  WLX_VERSION_1_2};
    CGinaExport<decltype(WlxRemoveStatusMessage)> m_RemoveStatusMessage{m_Exports, "WlxRemoveStatusMessage",
                                                                        WLX_VERSION_1_2};
    CGinaExport<decltype(WlxGetConsoleSwitchCredentials)> m_GetConsoleSwitchCredentials{
        m_Exports, "WlxGetConsoleSwitchCredentials", WLX_VERSION_1_3};
    CGinaExport<decltype(WlxReconnectNotify)> m_ReconnectNotify{m_Exports, "WlxReconnectNotify",
                                                                WLX_VERSION_1_3, Missing::Tolerated};
    CGinaExport<decltype(WlxDisconnectNotify)> m_DisconnectNotify{m_Exports, "WlxDisconnectNotify",
                                                                  WLX_VERSION_1_3, Missing::Tolerated};
};

/// A chained operation: the GINA is the last in the list, or is not called. What it has not got to
/// have is passed over.
template <typename Result, typename Function, typename... Args>
Result CGinaStandardObject::Chain(CTracePoint point, const CGinaExport<Function>& function, GinaNode* pNode,
                                  Args... args)
{
    return RunOperation<CUnexpectedGinaException, CNullFunctionHandleException>(
        s_szClass, point, [&]() -> Result {
            if (pNode->GetNext() != nullptr) {
                throw CUnexpectedGinaException(LUM_GINA_ORIGIN, GetGinaDLLName(), point.where);
            }
            if (!function.IsResolved() && function.m_missing == Missing::Tolerated) {
                CNullFunctionHandleException(LUM_GINA_ORIGIN, GetGinaDLLName(), point.where);
                return Result();
            }
            return Call<Result>(function, args...);
        });
}
