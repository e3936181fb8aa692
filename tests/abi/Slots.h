#pragma once

// The places of the operations in the table of an object: CALL(slot, name). Slot 0 has the destructor.
// clang-format off

/// Those that are passed on along the chain.
#define ABI_FORWARDED_CALLS(CALL) \
    CALL(1, ActivateUserShell) \
    CALL(2, DisconnectNotify) \
    CALL(3, DisplayLockedNotice) \
    CALL(4, DisplaySASNotice) \
    CALL(5, DisplayStatusMessage) \
    CALL(7, GetConsoleSwitchCredentials) \
    CALL(8, GetStatusMessage) \
    CALL(10, IsLockOk) \
    CALL(11, IsLogoffOk) \
    CALL(12, LoggedOnSAS) \
    CALL(13, LoggedOutSAS) \
    CALL(14, Logoff) \
    CALL(16, NetworkProviderLoad) \
    CALL(19, ReconnectNotify) \
    CALL(20, RemoveStatusMessage) \
    CALL(21, ScreenSaverNotify) \
    CALL(22, Shutdown) \
    CALL(23, StartApplication) \
    CALL(24, WkstaLockedSAS)

#define ABI_CALLS(CALL) \
    ABI_FORWARDED_CALLS(CALL) \
    CALL(6, DynamicUnload) \
    CALL(9, Initialize) \
    CALL(15, Negotiate) \
    CALL(17, QueryPlugin) \
    CALL(18, QueryPluginInfo)

// clang-format on
