#pragma once

#include <cstdint>

#include <windows.h>

// The stand-in standard GINA, as the program that drives it sees it.
//
// It is a real GINA DLL. Its 21 entry points negotiate, answer and fail as they are told to, and record what
// they received. A test or simulator loads it by the name under which the library will load it, configures
// it, and reads the records afterwards:
//
//     HMODULE hStandin = LoadLibraryW(TEXT("msgina.dll"));
//     auto pfnStandinGina = reinterpret_cast<PFN_STANDIN_GINA>(GetProcAddress(hStandin, "StandinGina"));
//     const StandinInterface& standin = *pfnStandinGina();
//     standin.SetResult(StandinCall::WlxIsLockOk, FALSE);
//
// Settings and records belong to the loaded image: each file name (msgina.dll, standin_gina.dll, ...) has its
// own. They are lost when the last reference to the DLL is freed.
//
// Threads: every operation may be used on any thread, also while a call is inside the GINA.

/// The entry points and what each answers until SetResult says otherwise: CALL(name, result).
// clang-format off
#define STANDIN_CALLS(CALL) \
    CALL(WlxNegotiate, TRUE) \
    CALL(WlxInitialize, TRUE) \
    CALL(WlxDisplaySASNotice, 0) \
    CALL(WlxLoggedOutSAS, WLX_SAS_ACTION_LOGON) \
    CALL(WlxActivateUserShell, TRUE) \
    CALL(WlxLoggedOnSAS, WLX_SAS_ACTION_NONE) \
    CALL(WlxDisplayLockedNotice, 0) \
    CALL(WlxWkstaLockedSAS, WLX_SAS_ACTION_UNLOCK_WKSTA) \
    CALL(WlxIsLockOk, TRUE) \
    CALL(WlxIsLogoffOk, TRUE) \
    CALL(WlxLogoff, 0) \
    CALL(WlxShutdown, 0) \
    CALL(WlxScreenSaverNotify, TRUE) \
    CALL(WlxStartApplication, TRUE) \
    CALL(WlxNetworkProviderLoad, TRUE) \
    CALL(WlxDisplayStatusMessage, TRUE) \
    CALL(WlxGetStatusMessage, TRUE) \
    CALL(WlxRemoveStatusMessage, TRUE) \
    CALL(WlxGetConsoleSwitchCredentials, TRUE) \
    CALL(WlxReconnectNotify, 0) \
    CALL(WlxDisconnectNotify, 0)
// clang-format on

enum class StandinCall : DWORD
{
#define STANDIN_ENUMERATOR(NAME, RESULT) NAME,
    STANDIN_CALLS(STANDIN_ENUMERATOR)
#undef STANDIN_ENUMERATOR
};

inline constexpr DWORD STANDIN_CALL_COUNT = 21;
inline constexpr DWORD STANDIN_MAX_ARGUMENTS = 8;

/// What goes wrong inside a call that is told to fail: after it was recorded, and before it stores anything
/// through an out-pointer.
enum class StandinFailure : DWORD
{
    None,
    ReadNull,            ///< access violation, 0xC0000005
    DivideByZero,        ///< 0xC0000094
    ExhaustStack,        ///< 0xC00000FD
    Throw,               ///< a C++ exception as the compiler of real plugins throws it, 0xE06D7363
    StructuredException, ///< any code; on Windows only
    ExitProcess,         ///< ends the process, with status 0
    ThrowOwn,            ///< a C++ exception of the DLL's own compiler
};

/// One call that the GINA received. Arguments are in the order of the entry point, the context first.
struct StandinRecord
{
    StandinCall call;
    DWORD dwArguments;
    /// Each argument as it came, pointers included.
    ULONG_PTR argument[STANDIN_MAX_ARGUMENTS];
    /// A copy of the text: for arguments that are texts, and for the text stored through an out-pointer (the
    /// status message, and DOMAIN\user of a WLX_MPR_NOTIFY_INFO). Null otherwise, and for a null argument.
    LPCWSTR szText[STANDIN_MAX_ARGUMENTS];
    /// What the GINA stored through an out-pointer: the DWORD, BOOL or pointer; a LUID with its high part in
    /// the high half; the pszUserName of a WLX_MPR_NOTIFY_INFO. 0 otherwise.
    std::uint64_t written[STANDIN_MAX_ARGUMENTS];
    /// FALSE until the call returns. It stays FALSE if the call fails.
    BOOL bReturned;
    /// The BOOL or SAS action code that it returned, 0 for entry points without a result.
    LONG nResult;
};

/// Runs inside a call, after it was recorded and before it fails or returns. It may block, call the
/// library again or call Winlogon's dispatch table.
using StandinHook = void(WINAPI*)(void* pContext, const StandinRecord* pRecord);

/// The value that a call stores through the out-pointer that is its argument at dwIndex (0-based): handles,
/// context, option words and the low part of the authentication id (its high part is 1). Nothing is stored if
/// the answer is FALSE or, in WlxLoggedOutSAS, WLX_SAS_ACTION_NONE; only the version always is.
constexpr DWORD StandinValue(StandinCall call, DWORD dwIndex)
{
    return 0x5A000000 | static_cast<DWORD>(call) << 8 | dwIndex;
}

/// What is stored elsewhere. The strings of a WLX_MPR_NOTIFY_INFO and the WLX_PROFILE_V1_0 are made with
/// LocalAlloc and belong to the caller, as with every GINA. *pSecure is inverted. Null out-pointers are left
/// alone.
inline constexpr WCHAR STANDIN_STATUS_TEXT[] = TEXT("The stand-in GINA is at work");
inline constexpr WCHAR STANDIN_USER[] = TEXT("standin");
inline constexpr WCHAR STANDIN_DOMAIN[] = TEXT("LUM");
inline constexpr WCHAR STANDIN_PASSWORD[] = TEXT("open sesame");
inline constexpr WCHAR STANDIN_PROFILE[] = TEXT("\\\\server\\profiles\\standin");

struct StandinInterface
{
    /// The size of this structure. A caller that was built with another header finds another size.
    DWORD dwSize;

    /// Forgets all records and all settings. Not while a call is inside the GINA.
    void(WINAPI* Reset)();

    /// The version that WlxNegotiate stores for its caller, whatever it returns; 0x00010004 at first. To
    /// refuse, set the result of WlxNegotiate to FALSE.
    void(WINAPI* SetVersion)(DWORD dwVersion);

    /// What a call returns from now on: any BOOL value or SAS action code. Entry points without a result
    /// ignore it.
    void(WINAPI* SetResult)(StandinCall call, LONG nResult);

    /// How a call fails from now on. dwCode is the code of a structured exception. FALSE, and nothing
    /// changed, when this system cannot fail like that.
    BOOL(WINAPI* SetFailure)(StandinCall call, StandinFailure failure, DWORD dwCode);

    /// What runs inside a call from now on; null for nothing. pContext must stay valid until it is replaced.
    void(WINAPI* SetHook)(StandinCall call, StandinHook pfnHook, void* pContext);

    /// What runs when the DLL is freed or the process ends; null for nothing.
    void(WINAPI* SetDetachHook)(void(WINAPI* pfnHook)());

    /// The number of calls received since the last Reset, those still running included.
    DWORD(WINAPI* GetRecordCount)();

    /// The records, oldest first; null for an index that there is no record for. They belong to the GINA and
    /// stay valid until Reset.
    const StandinRecord*(WINAPI* GetRecord)(DWORD dwIndex);
};

/// The export "StandinGina": never fails, and the interface is valid as long as the DLL is loaded.
using PFN_STANDIN_GINA = const StandinInterface*(WINAPI*)();
