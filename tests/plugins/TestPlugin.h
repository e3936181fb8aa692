#pragma once

#include <windows.h>

#include "StandinGina.h"

// The test plugin, as the test that drives it sees it.
//
// It is a real plugin DLL, built under several names. Its 24 exports answer what they are told to, fail
// where they are told to, pass calls on or keep them, and record what they received. A test loads it by the
// name that it is going to configure, sets it up, and reads the records afterwards. Settings and records
// belong to the loaded image, and are lost with the last reference to the DLL.
//
// Threads: every operation may be used on any thread, also while a call is inside the plugin.

/// The exports, without "LUM", and what each answers unless it passes the call on: CALL(name, result).
// clang-format off
#define PLUGIN_CALLS(CALL) \
    CALL(Negotiate, TRUE) \
    CALL(QueryPlugin, TRUE) \
    CALL(QueryPluginInfo, TRUE) \
    CALL(DynamicUnload, 0) \
    CALL(Initialize, TRUE) \
    CALL(DisplaySASNotice, 0) \
    CALL(LoggedOutSAS, WLX_SAS_ACTION_LOGON) \
    CALL(ActivateUserShell, TRUE) \
    CALL(LoggedOnSAS, WLX_SAS_ACTION_LOCK_WKSTA) \
    CALL(DisplayLockedNotice, 0) \
    CALL(IsLockOk, TRUE) \
    CALL(WkstaLockedSAS, WLX_SAS_ACTION_UNLOCK_WKSTA) \
    CALL(IsLogoffOk, TRUE) \
    CALL(Logoff, 0) \
    CALL(Shutdown, 0) \
    CALL(StartApplication, TRUE) \
    CALL(ScreenSaverNotify, TRUE) \
    CALL(NetworkProviderLoad, TRUE) \
    CALL(DisplayStatusMessage, TRUE) \
    CALL(GetStatusMessage, TRUE) \
    CALL(RemoveStatusMessage, TRUE) \
    CALL(GetConsoleSwitchCredentials, TRUE) \
    CALL(ReconnectNotify, 0) \
    CALL(DisconnectNotify, 0)
// clang-format on

enum class PluginCall : DWORD
{
#define PLUGIN_ENUMERATOR(NAME, RESULT) NAME,
    PLUGIN_CALLS(PLUGIN_ENUMERATOR)
#undef PLUGIN_ENUMERATOR
};

inline constexpr DWORD PLUGIN_CALL_COUNT = 24;
inline constexpr DWORD PLUGIN_MAX_ARGUMENTS = 9;

/// What becomes of a call that did not fail before.
enum class PluginAction : DWORD
{
    PassOn, ///< gives the next object's result; a call that is not forwarded is answered
    Change, ///< passes the call on, and answers
    Answer  ///< answers without passing the call on
};

/// One call that the plugin received.
struct PluginRecord
{
    PluginCall call;
    /// Its place among the calls of all plugins that share a counter; see SetCounter.
    LONG nOrder;
    /// The arguments of the export in their order; the node of a forwarded call is the first.
    ULONG_PTR argument[PLUGIN_MAX_ARGUMENTS];
    /// FALSE until the call returns; for ever if it fails.
    BOOL bReturned;
    LONG nResult;
};

/// Runs inside a call, after it was recorded and before anything else.
using PluginHook = void(WINAPI*)(void* pContext, const PluginRecord* pRecord);

struct TestPluginInterface
{
    /// Of this structure. A caller built with another header finds another size.
    DWORD dwSize;

    /// Forgets all records and settings. Not while a call is inside the plugin.
    void(WINAPI* Reset)();

    /// The versions that LUMNegotiate leaves in the record; 0 leaves what was offered.
    void(WINAPI* SetVersions)(DWORD dwWlxVersion, DWORD dwLUMVersion);

    /// What a call does from now on, and what it answers: the whole 32 bits of the result, also where the
    /// host looks at the low byte only.
    void(WINAPI* SetAction)(PluginCall call, PluginAction action, LONG nAnswer);

    /// How a call fails from now on, before it does anything else. dwCode is the code of a structured
    /// exception. FALSE, and nothing changed, when this system cannot fail like that.
    BOOL(WINAPI* SetFailure)(PluginCall call, StandinFailure failure, DWORD dwCode);

    /// What runs inside a call from now on; null for nothing.
    void(WINAPI* SetHook)(PluginCall call, PluginHook pfnHook, void* pContext);

    /// Where the calls of several plugins are counted; null for a counter of this plugin's own.
    void(WINAPI* SetCounter)(LONG* pnCounter);

    /// The number of calls received since the last Reset, those still running included.
    DWORD(WINAPI* GetRecordCount)();

    /// The records, oldest first; null when there is no such one. They stay valid until Reset.
    const PluginRecord*(WINAPI* GetRecord)(DWORD dwIndex);
};

/// The export "TestPlugin": never fails, and the interface is valid as long as the DLL is loaded.
using PFN_TEST_PLUGIN = const TestPluginInterface*(WINAPI*)();
