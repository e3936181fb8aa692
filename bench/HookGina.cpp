// A GINA written by hand that forwards every call to another, and does no more: what the library is measured
// against. With nothing behind it, it answers, and serves as the standard GINA.

#include <windows.h>

namespace {

// Without the declarations of winwlx.h, so that one type stands for all arguments, which are passed on as
// they come.
using Word = ULONG_PTR;

constexpr DWORD WINLOGON_1_4 = 0x00010004;

HMODULE g_hNext = nullptr;

/// Calls the export of the next GINA; without one the answer is 1, which is TRUE and WLX_SAS_ACTION_LOGON.
template <typename Result, typename... Arguments>
Result Forward(FARPROC& pfnNext, const char* szExport, Arguments... arguments)
{
    if (g_hNext == nullptr) {
        return static_cast<Result>(1);
    }
    if (pfnNext == nullptr) {
        pfnNext = GetProcAddress(g_hNext, szExport);
    }
    return reinterpret_cast<Result(WINAPI*)(Arguments...)>(reinterpret_cast<void (*)()>(pfnNext))(
        arguments...);
}

} // namespace

// clang-format off
#define ENTRY(RESULT, NAME, PARAMETERS, ...) \
    extern "C" RESULT WINAPI NAME PARAMETERS \
    { \
        static FARPROC s_pfnNext = nullptr; \
        return Forward<RESULT>(s_pfnNext, #NAME, __VA_ARGS__); \
    }

ENTRY(BOOL, WlxInitialize, (Word a, Word b, Word c, Word d, Word e), a, b, c, d, e)
ENTRY(VOID, WlxDisplaySASNotice, (Word a), a)
ENTRY(int, WlxLoggedOutSAS, (Word a, Word b, Word c, Word d, Word e, Word f, Word g, Word h), a, b, c, d, e, f, g, h)
ENTRY(BOOL, WlxActivateUserShell, (Word a, Word b, Word c, Word d), a, b, c, d)
ENTRY(int, WlxLoggedOnSAS, (Word a, Word b, Word c), a, b, c)
ENTRY(VOID, WlxDisplayLockedNotice, (Word a), a)
ENTRY(int, WlxWkstaLockedSAS, (Word a, Word b), a, b)
ENTRY(BOOL, WlxIsLockOk, (Word a), a)
ENTRY(BOOL, WlxIsLogoffOk, (Word a), a)
ENTRY(VOID, WlxLogoff, (Word a), a)
ENTRY(VOID, WlxShutdown, (Word a, Word b), a, b)
ENTRY(BOOL, WlxScreenSaverNotify, (Word a, Word b), a, b)
ENTRY(BOOL, WlxStartApplication, (Word a, Word b, Word c, Word d), a, b, c, d)
ENTRY(BOOL, WlxNetworkProviderLoad, (Word a, Word b), a, b)
ENTRY(BOOL, WlxDisplayStatusMessage, (Word a, Word b, Word c, Word d, Word e), a, b, c, d, e)
ENTRY(BOOL, WlxGetStatusMessage, (Word a, Word b, Word c, Word d), a, b, c, d)
ENTRY(BOOL, WlxRemoveStatusMessage, (Word a), a)
ENTRY(BOOL, WlxGetConsoleSwitchCredentials, (Word a, Word b), a, b)
ENTRY(VOID, WlxReconnectNotify, (Word a), a)
ENTRY(VOID, WlxDisconnectNotify, (Word a), a)
// clang-format on

extern "C" BOOL WINAPI WlxNegotiate(DWORD, PDWORD pdwVersion)
{
    *pdwVersion = WINLOGON_1_4;
    return TRUE;
}

/// What this GINA forwards to. The caller keeps it loaded.
extern "C" void WINAPI SetNext(HMODULE hNext)
{
    g_hNext = hNext;
}
