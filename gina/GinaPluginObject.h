#pragma once

#include "ForwardingGinaObject.h"
#include "Exceptions.h"

/// A plugin: a DLL with the LUM exports, in front of the standard GINA.
///
/// A forwarded operation hands the plugin its own node. It refuses the call if no other object follows in the
/// list: the plugin could not pass the call on. The DLL must have every export that its negotiated version
/// calls for.
class CGinaPluginObject final : public CForwardingGinaObject<CGinaPluginObject>
{
public:
    /// Loads the DLL, negotiates with it and looks up its exports; arguments as for CGinaObject. Throws what
    /// CGinaObject's constructor throws, CUnableToLoadDLLException, CUnableToLoadDLLFunctionException,
    /// CFailedGinaNegotiationsException, or CUnhandledPluginException for anything else, such as a fault in
    /// the plugin. The DLL is freed before any of these.
    CGinaPluginObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance,
                      const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion, DWORD dwUsingWlxVersion);
    ~CGinaPluginObject();

    void DynamicUnload() override;
    bool Initialize(CLUMObject* pLUMObject, DWORD dwInstanceCount, LPWSTR lpWinsta, HANDLE hWlx,
                    PVOID pvReserved, PVOID pWinlogonFunctions, PVOID* pWlxContext, DWORD dwLoadFlag1,
                    DWORD dwLoadFlag2) override;
    bool Negotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion, CGinaPluginInfo* pPluginInfo) override;
    bool QueryPlugin(CGinaPluginInfo* pPluginInfo, DWORD dwQueryParam1, DWORD dwQueryParam2,
                     DWORD dwQueryParam3) override;
    bool QueryPluginInfo(CGinaPluginInfo* pPluginInfo) override;

private:
    friend class CForwardingGinaObject;

    static constexpr const WCHAR* s_szClass = TEXT("CGinaPluginObject");

    void NegotiateVersions();
    [[noreturn]] void HookFailed(CSourceLocation where) const;

    template <typename Result, typename Function, typename... Args>
    Result Forward(CSlotPoint point, const CGinaExport<Function>& function, GinaNode* pNode, Args... args);

    // In the order in which they are looked up. A BYTE result is a one-byte boolean: the rest of its register
    // is undefined.
    CExportTable m_Exports;
    CGinaExport<BYTE WINAPI(CGinaPluginInfo*)> m_Negotiate{m_Exports, "LUMNegotiate"};
    CGinaExport<BYTE WINAPI(CGinaPluginInfo*, DWORD, DWORD, DWORD)> m_QueryPlugin{m_Exports,
                                                                                  "LUMQueryPlugin"};
    CGinaExport<BYTE WINAPI(CGinaPluginInfo*)> m_QueryPluginInfo{m_Exports, "LUMQueryPluginInfo"};
    CGinaExport<void WINAPI()> m_DynamicUnload{m_Exports, "LUMDynamicUnload"};
    CGinaExport<BOOL WINAPI(CLUMObject*, DWORD, LPWSTR, HANDLE, PVOID, PVOID, PVOID*, DWORD, DWORD)>
        m_Initialize{m_Exports, "LUMInitialize"};
    CGinaExport<void WINAPI(GinaNode*, PVOID)> m_DisplaySASNotice{m_Exports, "LUMDisplaySASNotice"};
    CGinaExport<int WINAPI(GinaNode*, PVOID, DWORD, PLUID, PSID, PDWORD, PHANDLE, PWLX_MPR_NOTIFY_INFO,
                           PVOID*)>
        m_LoggedOutSAS{m_Exports, "LUMLoggedOutSAS"};
    CGinaExport<BOOL WINAPI(GinaNode*, PVOID, PWSTR, PWSTR, PVOID)> m_ActivateUserShell{
        m_Exports, "LUMActivateUserShell"};
    CGinaExport<int WINAPI(GinaNode*, PVOID, DWORD, PVOID)> m_LoggedOnSAS{m_Exports, "LUMLoggedOnSAS"};
    CGinaExport<void WINAPI(GinaNode*, PVOID)> m_DisplayLockedNotice{m_Exports, "LUMDisplayLockedNotice"};
    CGinaExport<BOOL WINAPI(GinaNode*, PVOID)> m_IsLockOk{m_Exports, "LUMIsLockOk"};
    CGinaExport<int WINAPI(GinaNode*, PVOID, DWORD)> m_WkstaLockedSAS{m_Exports, "LUMWkstaLockedSAS"};
    CGinaExport<BOOL WINAPI(GinaNode*, PVOID)> m_IsLogoffOk{m_Exports, "LUMIsLogoffOk"};
    CGinaExport<void WINAPI(GinaNode*, PVOID)> m_Logoff{m_Exports, "LUMLogoff"};
    CGinaExport<void WINAPI(GinaNode*, PVOID, DWORD)> m_Shutdown{m_Exports, "LUMShutdown"};
    CGinaExport<BOOL WINAPI(GinaNode*, PVOID, PWSTR, PVOID, PWSTR)> m_StartApplication{
        m_Exports, "LUMStartApplication", WLX_VERSION_1_0};
    CGinaExport<BOOL WINAPI(GinaNode*, PVOID, BOOL*)> m_ScreenSaverNotify{m_Exports, "LUMScreenSaverNotify",
                                                                          WLX_VERSION_1_0};
    CGinaExport<BOOL WINAPI(GinaNode*, PVOID, PWLX_MPR_NOTIFY_INFO)> m_NetworkProviderLoad{
        m_Exports, "LUMNetworkProviderLoad", WLX_VERSION_1_2};
    CGinaExport<BOOL WINAPI(GinaNode*, PVOID, HDESK, DWORD, PWSTR, PWSTR)> m_DisplayStatusMessage{
        m_Exports, "LUMDisplayStatusMessage", WLX_VERSION_1_2};
    CGinaExport<BOOL WINAPI(GinaNode*, PVOID, DWORD*, PWSTR, DWORD)> m_GetStatusMessage{
        m_Exports, "LUMGetStatusMessage", WLX_VERSION_1_2};
    CGinaExport<BOOL WINAPI(GinaNode*, PVOID)> m_RemoveStatusMessage{m_Exports, "LUMRemoveStatusMessage",
                                                                     WLX_VERSION_1_2};
    CGinaExport<BOOL WINAPI(GinaNode*, PVOID, PVOID)> m_GetConsoleSwitchCredentials{
        m_Exports, "LUMGetConsoleSwitchCredentials", WLX_VERSION_1_3};
    CGinaExport<void WINAPI(GinaNode*, PVOID)> m_ReconnectNotify{m_Exports, "LUMReconnectNotify",
                                                                 WLX_VERSION_1_3};
    CGinaExport<void WINAPI(GinaNode*, PVOID)> m_DisconnectNotify{m_Exports, "LUMDisconnectNotify",
                                                                  WLX_VERSION_1_3};
};

/// A forwarded operation. Throws without calling the plugin if no other object follows it.
template <typename Result, typename Function, typename... Args>
Result CGinaPluginObject::Forward(CSlotPoint point, const CGinaExport<Function>& function, GinaNode* pNode,
                                  Args... args)
{
    return RunForwarded<CUnexpectedEndOfListException, CNullFunctionHandleException>(
        s_szClass, point, pNode, [&] {
            if (IsLast(pNode)) {
                throw CUnexpectedEndOfListException(LUM_GINA_ORIGIN, GetGinaDLLName(), point.where);
            }
            return Call<Result>(point.where, function, pNode, args...);
        });
}
