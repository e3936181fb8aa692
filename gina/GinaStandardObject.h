#pragma once

#include "GinaObject.h"

/// A standard GINA: a DLL with the Wlx exports, and the end of the chain.
///
/// It refuses a call in which another object follows it. Four exports may be missing (their operations
/// then do nothing), the others must be there as far as the negotiated version has them.
class CGinaStandardObject final : public CGinaObject
{
public:
    /// Loads the DLL, negotiates with it and resolves its exports; arguments as for CGinaObject. Throws
    /// what CGinaObject's constructor throws, CUnableToLoadDLLException, CUnableToLoadDLLFunctionException,
    /// CFailedGinaNegotiationsException, or CUnhandledExceptionException for anything else, a fault in
    /// the DLL included. The DLL is freed again then.
    CGinaStandardObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance,
                        const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion, DWORD dwUsingWlxVersion);
    ~CGinaStandardObject();

    void* DeletingDestructor(DWORD dwFlags) override;

    bool ActivateUserShell(GinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName, PWSTR pszMprLogonScript,
                           PVOID pEnvironment) override;
    void DisconnectNotify(GinaNode* pNode, PVOID pWlxContext) override;
    void DisplayLockedNotice(GinaNode* pNode, PVOID pWlxContext) override;
    void DisplaySASNotice(GinaNode* pNode, PVOID pWlxContext) override;
    bool DisplayStatusMessage(GinaNode* pNode, PVOID pWlxContext, HDESK hDesktop, DWORD dwOptions,
                              PWSTR pTitle, PWSTR pMessage) override;
    void DynamicUnload() override;
    bool GetConsoleSwitchCredentials(GinaNode* pNode, PVOID pWlxContext, PVOID pCredInfo) override;
    bool GetStatusMessage(GinaNode* pNode, PVOID pWlxContext, DWORD* pdwOptions, PWSTR pMessage,
                          DWORD dwBufferSize) override;
    bool Initialize(CLUMObject* pLUMObject, DWORD dwInstanceCount, LPWSTR lpWinsta, HANDLE hWlx,
                    PVOID pvReserved, PVOID pWinlogonFunctions, PVOID* pWlxContext, DWORD dwLoadFlag1,
                    DWORD dwLoadFlag2) override;
    bool IsLockOk(GinaNode* pNode, PVOID pWlxContext) override;
    bool IsLogoffOk(GinaNode* pNode, PVOID pWlxContext) override;
    int LoggedOnSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PVOID pReserved) override;
    int LoggedOutSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PLUID pAuthenticationId,
                     PSID pLogonSid, PDWORD pdwOptions, PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo,
                     PVOID* pProfile) override;
    void Logoff(GinaNode* pNode, PVOID pWlxContext) override;
    bool Negotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion, CGinaPluginInfo* pPluginInfo) override;
    bool NetworkProviderLoad(GinaNode* pNode, PVOID pWlxContext, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo) override;
    bool QueryPlugin(CGinaPluginInfo* pPluginInfo, DWORD dwQueryParam1, DWORD dwQueryParam2,
                     DWORD dwQueryParam3) override;
    bool QueryPluginInfo(CGinaPluginInfo* pPluginInfo) override;
    void ReconnectNotify(GinaNode* pNode, PVOID pWlxContext) override;
    bool RemoveStatusMessage(GinaNode* pNode, PVOID pWlxContext) override;
    bool ScreenSaverNotify(GinaNode* pNode, PVOID pWlxContext, BOOL* pSecure) override;
    void Shutdown(GinaNode* pNode, PVOID pWlxContext, DWORD dwShutdownType) override;
    bool StartApplication(GinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName, PVOID pEnvironment,
                          PWSTR pszCmdLine) override;
    int WkstaLockedSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType) override;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CGinaStandardObject");

    void Hook();
    void NegotiateVersion();

    template <typename Result, typename Function, typename... Args>
    Result Chain(CTracePoint point, const CGinaExport<Function>& function, GinaNode* pNode, Args... args);
    template <typename Result, typename Function, typename... Args>
    Result CallUnchained(CTracePoint point, const CGinaExport<Function>& function, Args... args);
    template <typename Result, typename Function, typename... Args>
    Result CallExport(const CGinaExport<Function>& function, Args... args) const;

    // In the order in which they are resolved.
    CExportTable m_Exports;
    CGinaExport<decltype(WlxNegotiate)> m_WlxNegotiate{m_Exports, "WlxNegotiate"};
    CGinaExport<decltype(WlxInitialize)> m_WlxInitialize{m_Exports, "WlxInitialize"};
    CGinaExport<decltype(WlxDisplaySASNotice)> m_WlxDisplaySASNotice{m_Exports, "WlxDisplaySASNotice"};
    CGinaExport<decltype(WlxLoggedOutSAS)> m_WlxLoggedOutSAS{m_Exports, "WlxLoggedOutSAS"};
    CGinaExport<decltype(WlxActivateUserShell)> m_WlxActivateUserShell{m_Exports, "WlxActivateUserShell"};
    CGinaExport<decltype(WlxLoggedOnSAS)> m_WlxLoggedOnSAS{m_Exports, "WlxLoggedOnSAS"};
    CGinaExport<decltype(WlxDisplayLockedNotice)> m_WlxDisplayLockedNotice{m_Exports, "WlxDisplayLockedNotice"};
    CGinaExport<decltype(WlxIsLockOk)> m_WlxIsLockOk{m_Exports, "WlxIsLockOk"};
    CGinaExport<decltype(WlxWkstaLockedSAS)> m_WlxWkstaLockedSAS{m_Exports, "WlxWkstaLockedSAS"};
    CGinaExport<decltype(WlxIsLogoffOk)> m_WlxIsLogoffOk{m_Exports, "WlxIsLogoffOk"};
    CGinaExport<decltype(WlxLogoff)> m_WlxLogoff{m_Exports, "WlxLogoff"};
    CGinaExport<decltype(WlxShutdown)> m_WlxShutdown{m_Exports, "WlxShutdown"};
    CGinaExport<decltype(WlxStartApplication)> m_WlxStartApplication{m_Exports, "WlxStartApplication",
                                                                     WLX_VERSION_1_0, Missing::Tolerated};
    CGinaExport<decltype(WlxScreenSaverNotify)> m_WlxScreenSaverNotify{m_Exports, "WlxScreenSaverNotify",
                                                                       WLX_VERSION_1_0, Missing::Tolerated};
    CGinaExport<decltype(WlxNetworkProviderLoad)> m_WlxNetworkProviderLoad{m_Exports, "WlxNetworkProviderLoad",
                                                                           WLX_VERSION_1_2};
    CGinaExport<decltype(WlxDisplayStatusMessage)> m_WlxDisplayStatusMessage{
        m_Exports, "WlxDisplayStatusMessage", WLX_VERSION_1_2};
    CGinaExport<decltype(WlxGetStatusMessage)> m_WlxGetStatusMessage{m_Exports, "WlxGetStatusMessage",
                                                                     WLX_VERSION_1_2};
    CGinaExport<decltype(WlxRemoveStatusMessage)> m_WlxRemoveStatusMessage{m_Exports, "WlxRemoveStatusMessage",
                                                                           WLX_VERSION_1_2};
    CGinaExport<decltype(WlxGetConsoleSwitchCredentials)> m_WlxGetConsoleSwitchCredentials{
        m_Exports, "WlxGetConsoleSwitchCredentials", WLX_VERSION_1_3};
    CGinaExport<decltype(WlxReconnectNotify)> m_WlxReconnectNotify{m_Exports, "WlxReconnectNotify",
                                                                   WLX_VERSION_1_3, Missing::Tolerated};
    CGinaExport<decltype(WlxDisconnectNotify)> m_WlxDisconnectNotify{m_Exports, "WlxDisconnectNotify",
                                                                     WLX_VERSION_1_3, Missing::Tolerated};
};
