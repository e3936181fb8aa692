#pragma once

#include "windows.h"

// The interface between Winlogon and a GINA, versions 1.0 to 1.4. Structures that only pass through are
// declared but not defined.

#define WLX_VERSION_1_0 0x00010000
#define WLX_VERSION_1_1 0x00010001
#define WLX_VERSION_1_2 0x00010002
#define WLX_VERSION_1_3 0x00010003
#define WLX_VERSION_1_4 0x00010004
#define WLX_CURRENT_VERSION WLX_VERSION_1_4

#define WLX_SAS_TYPE_TIMEOUT 0
#define WLX_SAS_TYPE_CTRL_ALT_DEL 1
#define WLX_SAS_TYPE_SCRNSVR_TIMEOUT 2
#define WLX_SAS_TYPE_SCRNSVR_ACTIVITY 3
#define WLX_SAS_TYPE_USER_LOGOFF 4
#define WLX_SAS_TYPE_SC_INSERT 5
#define WLX_SAS_TYPE_SC_REMOVE 6
#define WLX_SAS_TYPE_AUTHENTICATED 7
#define WLX_SAS_TYPE_SC_FIRST_READER_ARRIVED 8
#define WLX_SAS_TYPE_SC_LAST_READER_REMOVED 9
#define WLX_SAS_TYPE_SWITCHUSER 10
#define WLX_SAS_TYPE_MAX_MSFT_VALUE 127

#define WLX_SAS_ACTION_LOGON 1
#define WLX_SAS_ACTION_NONE 2
#define WLX_SAS_ACTION_LOCK_WKSTA 3
#define WLX_SAS_ACTION_LOGOFF 4
#define WLX_SAS_ACTION_SHUTDOWN 5
#define WLX_SAS_ACTION_PWD_CHANGED 6
#define WLX_SAS_ACTION_TASKLIST 7
#define WLX_SAS_ACTION_UNLOCK_WKSTA 8
#define WLX_SAS_ACTION_FORCE_LOGOFF 9
#define WLX_SAS_ACTION_SHUTDOWN_POWER_OFF 10
#define WLX_SAS_ACTION_SHUTDOWN_REBOOT 11
#define WLX_SAS_ACTION_SHUTDOWN_SLEEP 12
#define WLX_SAS_ACTION_SHUTDOWN_SLEEP2 13
#define WLX_SAS_ACTION_SHUTDOWN_HIBERNATE 14
#define WLX_SAS_ACTION_RECONNECTED 15
#define WLX_SAS_ACTION_DELAYED_FORCE_LOGOFF 16
#define WLX_SAS_ACTION_SWITCH_CONSOLE 17

#define WLX_LOGON_OPT_NO_PROFILE 0x00000001

#define STATUSMSG_OPTION_NOANIMATION 0x00000001
#define STATUSMSG_OPTION_SETFOREGROUND 0x00000002

#define WLX_PROFILE_TYPE_V1_0 1
#define WLX_PROFILE_TYPE_V2_0 2

struct WLX_PROFILE_V1_0
{
    DWORD dwType;
    PWSTR pszProfile;
};
using PWLX_PROFILE_V1_0 = WLX_PROFILE_V1_0*;

struct WLX_PROFILE_V2_0
{
    DWORD dwType;
    PWSTR pszProfile;
    PWSTR pszPolicy;
    PWSTR pszNetworkDefaultUserProfile;
    PWSTR pszServerName;
    PWSTR pszEnvironment;
};
using PWLX_PROFILE_V2_0 = WLX_PROFILE_V2_0*;

struct WLX_MPR_NOTIFY_INFO
{
    PWSTR pszUserName;
    PWSTR pszDomain;
    PWSTR pszPassword;
    PWSTR pszOldPassword;
};
using PWLX_MPR_NOTIFY_INFO = WLX_MPR_NOTIFY_INFO*;

using PWLX_DESKTOP = struct WLX_DESKTOP*;
using PWLX_TERMINAL_SERVICES_DATA = struct WLX_TERMINAL_SERVICES_DATA*;
using PWLX_CLIENT_CREDENTIALS_INFO_V1_0 = struct WLX_CLIENT_CREDENTIALS_INFO_V1_0*;
using PWLX_CLIENT_CREDENTIALS_INFO_V2_0 = struct WLX_CLIENT_CREDENTIALS_INFO_V2_0*;
using PWLX_CONSOLESWITCH_CREDENTIALS_INFO_V1_0 = struct WLX_CONSOLESWITCH_CREDENTIALS_INFO_V1_0*;

// What a GINA exports.

BOOL WINAPI WlxNegotiate(DWORD dwWinlogonVersion, PDWORD pdwDllVersion);
BOOL WINAPI WlxInitialize(LPWSTR lpWinsta, HANDLE hWlx, PVOID pvReserved, PVOID pWinlogonFunctions,
                          PVOID* pWlxContext);
VOID WINAPI WlxDisplaySASNotice(PVOID pWlxContext);
int WINAPI WlxLoggedOutSAS(PVOID pWlxContext, DWORD dwSasType, PLUID pAuthenticationId, PSID pLogonSid,
                           PDWORD pdwOptions, PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo,
                           PVOID* pProfile);
BOOL WINAPI WlxActivateUserShell(PVOID pWlxContext, PWSTR pszDesktopName, PWSTR pszMprLogonScript,
                                 PVOID pEnvironment);
int WINAPI WlxLoggedOnSAS(PVOID pWlxContext, DWORD dwSasType, PVOID pReserved);
VOID WINAPI WlxDisplayLockedNotice(PVOID pWlxContext);
int WINAPI WlxWkstaLockedSAS(PVOID pWlxContext, DWORD dwSasType);
BOOL WINAPI WlxIsLockOk(PVOID pWlxContext);
BOOL WINAPI WlxIsLogoffOk(PVOID pWlxContext);
VOID WINAPI WlxLogoff(PVOID pWlxContext);
VOID WINAPI WlxShutdown(PVOID pWlxContext, DWORD ShutdownType);
BOOL WINAPI WlxScreenSaverNotify(PVOID pWlxContext, BOOL* pSecure);
BOOL WINAPI WlxStartApplication(PVOID pWlxContext, PWSTR pszDesktopName, PVOID pEnvironment,
                                PWSTR pszCmdLine);
BOOL WINAPI WlxNetworkProviderLoad(PVOID pWlxContext, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo);
BOOL WINAPI WlxDisplayStatusMessage(PVOID pWlxContext, HDESK hDesktop, DWORD dwOptions, PWSTR pTitle,
                                    PWSTR pMessage);
BOOL WINAPI WlxGetStatusMessage(PVOID pWlxContext, DWORD* pdwOptions, PWSTR pMessage, DWORD dwBufferSize);
BOOL WINAPI WlxRemoveStatusMessage(PVOID pWlxContext);
BOOL WINAPI WlxGetConsoleSwitchCredentials(PVOID pWlxContext, PVOID pCredInfo);
VOID WINAPI WlxReconnectNotify(PVOID pWlxContext);
VOID WINAPI WlxDisconnectNotify(PVOID pWlxContext);

// What Winlogon offers a GINA.

using PWLX_USE_CTRL_ALT_DEL = VOID(WINAPI*)(HANDLE hWlx);
using PWLX_SET_CONTEXT_POINTER = VOID(WINAPI*)(HANDLE hWlx, PVOID pWlxContext);
using PWLX_SAS_NOTIFY = VOID(WINAPI*)(HANDLE hWlx, DWORD dwSasType);
using PWLX_SET_TIMEOUT = BOOL(WINAPI*)(HANDLE hWlx, DWORD Timeout);
using PWLX_ASSIGN_SHELL_PROTECTION = int(WINAPI*)(HANDLE hWlx, HANDLE hToken, HANDLE hProcess,
                                                  HANDLE hThread);
using PWLX_MESSAGE_BOX = int(WINAPI*)(HANDLE hWlx, HWND hwndOwner, LPWSTR lpszText, LPWSTR lpszTitle,
                                      UINT fuStyle);
using PWLX_DIALOG_BOX = int(WINAPI*)(HANDLE hWlx, HANDLE hInst, LPWSTR lpszTemplate, HWND hwndOwner,
                                     DLGPROC dlgprc);
using PWLX_DIALOG_BOX_INDIRECT = int(WINAPI*)(HANDLE hWlx, HANDLE hInst, LPCDLGTEMPLATE hDialogTemplate,
                                              HWND hwndOwner, DLGPROC dlgprc);
using PWLX_DIALOG_BOX_PARAM = int(WINAPI*)(HANDLE hWlx, HANDLE hInst, LPWSTR lpszTemplate, HWND hwndOwner,
                                           DLGPROC dlgprc, LPARAM dwInitParam);
using PWLX_DIALOG_BOX_INDIRECT_PARAM = int(WINAPI*)(HANDLE hWlx, HANDLE hInst, LPCDLGTEMPLATE hDialogTemplate,
                                                    HWND hwndOwner, DLGPROC dlgprc, LPARAM dwInitParam);
using PWLX_SWITCH_DESKTOP_TO_USER = int(WINAPI*)(HANDLE hWlx);
using PWLX_SWITCH_DESKTOP_TO_WINLOGON = int(WINAPI*)(HANDLE hWlx);
using PWLX_CHANGE_PASSWORD_NOTIFY = int(WINAPI*)(HANDLE hWlx, PWLX_MPR_NOTIFY_INFO pMprInfo,
                                                 DWORD dwChangeInfo);
using PWLX_GET_SOURCE_DESKTOP = BOOL(WINAPI*)(HANDLE hWlx, PWLX_DESKTOP* ppDesktop);
using PWLX_SET_RETURN_DESKTOP = BOOL(WINAPI*)(HANDLE hWlx, PWLX_DESKTOP pDesktop);
using PWLX_CREATE_USER_DESKTOP = BOOL(WINAPI*)(HANDLE hWlx, HANDLE hToken, DWORD Flags, PWSTR pszDesktopName,
                                               PWLX_DESKTOP* ppDesktop);
using PWLX_CHANGE_PASSWORD_NOTIFY_EX = int(WINAPI*)(HANDLE hWlx, PWLX_MPR_NOTIFY_INFO pMprInfo,
                                                    DWORD dwChangeInfo, PWSTR ProviderName, PVOID Reserved);
using PWLX_CLOSE_USER_DESKTOP = BOOL(WINAPI*)(HANDLE hWlx, PWLX_DESKTOP pDesktop, HANDLE hToken);
using PWLX_SET_OPTION = BOOL(WINAPI*)(HANDLE hWlx, DWORD Option, ULONG_PTR Value, ULONG_PTR* OldValue);
using PWLX_GET_OPTION = BOOL(WINAPI*)(HANDLE hWlx, DWORD Option, ULONG_PTR* Value);
using PWLX_WIN31_MIGRATE = VOID(WINAPI*)(HANDLE hWlx);
using PWLX_QUERY_CLIENT_CREDENTIALS = BOOL(WINAPI*)(PWLX_CLIENT_CREDENTIALS_INFO_V1_0 pCred);
using PWLX_QUERY_IC_CREDENTIALS = BOOL(WINAPI*)(PWLX_CLIENT_CREDENTIALS_INFO_V1_0 pCred);
using PWLX_QUERY_TS_LOGON_CREDENTIALS = BOOL(WINAPI*)(PWLX_CLIENT_CREDENTIALS_INFO_V2_0 pCred);
using PWLX_DISCONNECT = BOOL(WINAPI*)();
using PWLX_QUERY_TERMINAL_SERVICES_DATA = DWORD(WINAPI*)(HANDLE hWlx, PWLX_TERMINAL_SERVICES_DATA pTSData,
                                                         WCHAR* UserName, WCHAR* Domain);
using PWLX_QUERY_CONSOLESWITCH_CREDENTIALS = DWORD(WINAPI*)(PWLX_CONSOLESWITCH_CREDENTIALS_INFO_V1_0 pCred);

// The table of each version begins like that of the version before. The structures are not derived from each
// other, because a table is also filled in as one aggregate.

#define WLX_DISPATCH_MEMBERS_1_0                                                                             \
    PWLX_USE_CTRL_ALT_DEL WlxUseCtrlAltDel;                                                                  \
    PWLX_SET_CONTEXT_POINTER WlxSetContextPointer;                                                           \
    PWLX_SAS_NOTIFY WlxSasNotify;                                                                            \
    PWLX_SET_TIMEOUT WlxSetTimeout;                                                                          \
    PWLX_ASSIGN_SHELL_PROTECTION WlxAssignShellProtection;                                                   \
    PWLX_MESSAGE_BOX WlxMessageBox;                                                                          \
    PWLX_DIALOG_BOX WlxDialogBox;                                                                            \
    PWLX_DIALOG_BOX_PARAM WlxDialogBoxParam;                                                                 \
    PWLX_DIALOG_BOX_INDIRECT WlxDialogBoxIndirect;                                                           \
    PWLX_DIALOG_BOX_INDIRECT_PARAM WlxDialogBoxIndirectParam;                                                \
    PWLX_SWITCH_DESKTOP_TO_USER WlxSwitchDesktopToUser;                                                      \
    PWLX_SWITCH_DESKTOP_TO_WINLOGON WlxSwitchDesktopToWinlogon;                                              \
    PWLX_CHANGE_PASSWORD_NOTIFY WlxChangePasswordNotify;

#define WLX_DISPATCH_MEMBERS_1_1                                                                             \
    WLX_DISPATCH_MEMBERS_1_0                                                                                 \
    PWLX_GET_SOURCE_DESKTOP WlxGetSourceDesktop;                                                             \
    PWLX_SET_RETURN_DESKTOP WlxSetReturnDesktop;                                                             \
    PWLX_CREATE_USER_DESKTOP WlxCreateUserDesktop;                                                           \
    PWLX_CHANGE_PASSWORD_NOTIFY_EX WlxChangePasswordNotifyEx;

#define WLX_DISPATCH_MEMBERS_1_2                                                                             \
    WLX_DISPATCH_MEMBERS_1_1                                                                                 \
    PWLX_CLOSE_USER_DESKTOP WlxCloseUserDesktop;

#define WLX_DISPATCH_MEMBERS_1_3                                                                             \
    WLX_DISPATCH_MEMBERS_1_2                                                                                 \
    PWLX_SET_OPTION WlxSetOption;                                                                            \
    PWLX_GET_OPTION WlxGetOption;                                                                            \
    PWLX_WIN31_MIGRATE WlxWin31Migrate;                                                                      \
    PWLX_QUERY_CLIENT_CREDENTIALS WlxQueryClientCredentials;                                                 \
    PWLX_QUERY_IC_CREDENTIALS WlxQueryInetConnectorCredentials;                                              \
    PWLX_DISCONNECT WlxDisconnect;                                                                           \
    PWLX_QUERY_TERMINAL_SERVICES_DATA WlxQueryTerminalServicesData;

#define WLX_DISPATCH_MEMBERS_1_4                                                                             \
    WLX_DISPATCH_MEMBERS_1_3                                                                                 \
    PWLX_QUERY_CONSOLESWITCH_CREDENTIALS WlxQueryConsoleSwitchCredentials;                                   \
    PWLX_QUERY_TS_LOGON_CREDENTIALS WlxQueryTsLogonCredentials;

#define WLX_DISPATCH_TABLE(VERSION)                                                                          \
    struct WLX_DISPATCH_VERSION_##VERSION                                                                    \
    {                                                                                                        \
        WLX_DISPATCH_MEMBERS_##VERSION                                                                       \
    };                                                                                                       \
    using PWLX_DISPATCH_VERSION_##VERSION = WLX_DISPATCH_VERSION_##VERSION*

WLX_DISPATCH_TABLE(1_0);
WLX_DISPATCH_TABLE(1_1);
WLX_DISPATCH_TABLE(1_2);
WLX_DISPATCH_TABLE(1_3);
WLX_DISPATCH_TABLE(1_4);

#undef WLX_DISPATCH_TABLE
#undef WLX_DISPATCH_MEMBERS_1_0
#undef WLX_DISPATCH_MEMBERS_1_1
#undef WLX_DISPATCH_MEMBERS_1_2
#undef WLX_DISPATCH_MEMBERS_1_3
#undef WLX_DISPATCH_MEMBERS_1_4
