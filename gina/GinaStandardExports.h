#pragma once

#include "GinaExport.h"
#include "WlxInterface.h"

/// The exports of a standard GINA. One with a version is looked up only when the GINA negotiates a later
/// version. Four of them may be missing.
struct CGinaStandardExports
{
    // In the order in which they are looked up.
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
