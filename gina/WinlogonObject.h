#pragma once

#include <windows.h>
#include "WlxInterface.h"

#include "GlobalObject.h"

/// Winlogon's dispatch table, and the interface version agreed with Winlogon.
///
/// The host itself calls only WlxSetTimeout. GINA objects are handed Winlogon's own table, never the copies.
/// Written on Winlogon's thread only. No operation throws.
class CWinlogonObject : public CGlobalObject
{
public:
    CWinlogonObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg) noexcept;
    ~CWinlogonObject();
    CWinlogonObject(const CWinlogonObject&) = delete;
    CWinlogonObject& operator=(const CWinlogonObject&) = delete;

    /// Keeps the agreed version and a pointer to the table of WlxInitialize, which Winlogon owns, and copies
    /// the entries. True even if nothing could be copied, which is traced.
    bool SetWinlogonObject(PVOID pWinlogonFunctions, DWORD dwVersion) noexcept;

    /// Copies the entries that the agreed version has, and warns of those that are null. False for a null
    /// table or a version below 1.0: then all members are null. False also when the table cannot be read:
    /// then the members from that place on are null.
    bool CopyFunctions(PVOID pWinlogonFunctions) noexcept;

    /// Winlogon's own table; null, and a warning, before SetWinlogonObject.
    PVOID GetWinlogonFunctions() noexcept;
    /// The copied callback; null, and a warning, when there is none.
    PWLX_SET_TIMEOUT GetWlxSetTimeout() noexcept;

    DWORD m_dwVersion;
    PWLX_ASSIGN_SHELL_PROTECTION m_pWlxAssignShellProtection;
    PWLX_CHANGE_PASSWORD_NOTIFY m_pWlxChangePasswordNotify;
    PWLX_CHANGE_PASSWORD_NOTIFY_EX m_pWlxChangePasswordNotifyEx;
    PWLX_CLOSE_USER_DESKTOP m_pWlxCloseUserDesktop;
    PWLX_CREATE_USER_DESKTOP m_pWlxCreateUserDesktop;
    PWLX_DIALOG_BOX m_pWlxDialogBox;
    PWLX_DIALOG_BOX_INDIRECT m_pWlxDialogBoxIndirect;
    PWLX_DIALOG_BOX_INDIRECT_PARAM m_pWlxDialogBoxIndirectParam;
    PWLX_DIALOG_BOX_PARAM m_pWlxDialogBoxParam;
    PWLX_DISCONNECT m_pWlxDisconnect;
    PWLX_GET_OPTION m_pWlxGetOption;
    PWLX_GET_SOURCE_DESKTOP m_pWlxGetSourceDesktop;
    PWLX_MESSAGE_BOX m_pWlxMessageBox;
    PWLX_QUERY_CLIENT_CREDENTIALS m_pWlxQueryClientCredentials;
    PWLX_QUERY_CONSOLESWITCH_CREDENTIALS m_pWlxQueryConsoleSwitchCredentials;
    PWLX_QUERY_IC_CREDENTIALS m_pWlxQueryInetConnectorCredentials;
    PWLX_QUERY_TERMINAL_SERVICES_DATA m_pWlxQueryTerminalServicesData;
    PWLX_QUERY_TS_LOGON_CREDENTIALS m_pWlxQueryTsLogonCredentials;
    PWLX_SAS_NOTIFY m_pWlxSasNotify;
    PWLX_SET_CONTEXT_POINTER m_pWlxSetContextPointer;
    PWLX_SET_OPTION m_pWlxSetOption;
    PWLX_SET_RETURN_DESKTOP m_pWlxSetReturnDesktop;
    PWLX_SET_TIMEOUT m_pWlxSetTimeout;
    PWLX_SWITCH_DESKTOP_TO_USER m_pWlxSwitchDesktopToUser;
    PWLX_SWITCH_DESKTOP_TO_WINLOGON m_pWlxSwitchDesktopToWinlogon;
    PWLX_USE_CTRL_ALT_DEL m_pWlxUseCtrlAltDel;
    PWLX_WIN31_MIGRATE m_pWlxWin31Migrate;
    PVOID m_pWinlogonFunctions;
};
