#pragma once

#include "GinaExport.h"
#include "GinaObject.h"

/// The exports of a plugin. One with a version is looked up only when the plugin negotiates a later version.
struct CGinaPluginExports
{
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
