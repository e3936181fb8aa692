#include "Calls.h"

#include <iterator>
#include <type_traits>
#include <utility>

#include <winwlx.h>

namespace {

template <typename T>
T ToArgument(ULONG_PTR value)
{
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<T>(value);
    } else {
        return static_cast<T>(value);
    }
}

template <typename Function>
struct Invocation;
template <typename Result, typename... Arguments>
struct Invocation<Result(WINAPI*)(Arguments...)>
{
    static LONG Invoke(FARPROC pfnEntry, const ULONG_PTR* pArguments)
    {
        return Invoke(pfnEntry, pArguments, std::index_sequence_for<Arguments...>());
    }

private:
    template <std::size_t... Index>
    static LONG Invoke(FARPROC pfnEntry, const ULONG_PTR* pArguments, std::index_sequence<Index...>)
    {
        auto* pfn = reinterpret_cast<Result(WINAPI*)(Arguments...)>(reinterpret_cast<void*>(pfnEntry));
        if constexpr (std::is_void_v<Result>) {
            pfn(ToArgument<Arguments>(pArguments[Index])...);
            return 0;
        } else {
            return pfn(ToArgument<Arguments>(pArguments[Index])...);
        }
    }
};

constexpr CArgument Given(const char* szName, WinlogonValue value)
{
    return {.szName = szName, .given = value};
}

constexpr CArgument Number(const char* szName, const CCodes& codes, const char* szDefault)
{
    return {.szName = szName, .pCodes = &codes, .szDefault = szDefault};
}

constexpr CArgument Text(const char* szName, const char* szDefault)
{
    return {.szName = szName, .bText = true, .szDefault = szDefault};
}

constexpr CArgument Out(const char* szName, const COutForm& form)
{
    return {.szName = szName, .pOut = &form};
}

/// An out-pointer to a number that the GINA may look at first.
constexpr CArgument InOut(const char* szName, const CCodes& codes, const char* szDefault,
                          const COutForm& form)
{
    return {.szName = szName, .pCodes = &codes, .szDefault = szDefault, .pOut = &form};
}

constexpr CArgument CONTEXT_ARGUMENT = Given("context", WinlogonValue::Context);
constexpr CArgument SAS_ARGUMENT = Number("sas", SAS_TYPES, "CTRL_ALT_DEL");
constexpr CArgument RESERVED = Given("reserved", WinlogonValue::Nothing);
constexpr CArgument ENVIRONMENT = Given("environment", WinlogonValue::Environment);
constexpr CArgument DESKTOP_NAME = Text("desktop", "winsta0\\default");

// clang-format off
#define CALL(NAME, SINCE, RESULT, ...) \
    {#NAME, StandinCall::NAME, WLX_VERSION_##SINCE, ResultKind::RESULT, Invocation<decltype(&NAME)>::Invoke, \
     {__VA_ARGS__}}

constexpr CWlxCall CALLS[] = {
    CALL(WlxNegotiate, 1_0, Bool, Number("version", VERSIONS, nullptr), Out("version", OUT_VERSION)),
    CALL(WlxInitialize, 1_0, Bool, Text("station", "WinSta0"), Given("handle", WinlogonValue::WlxHandle),
         RESERVED, Given("dispatch table", WinlogonValue::DispatchTable), Out("context", OUT_POINTER)),
    CALL(WlxDisplaySASNotice, 1_0, None, CONTEXT_ARGUMENT),
    CALL(WlxLoggedOutSAS, 1_0, SasAction, CONTEXT_ARGUMENT, SAS_ARGUMENT, Out("id", OUT_LUID),
         Given("logon SID", WinlogonValue::LogonSid), Out("options", OUT_DWORD), Out("token", OUT_POINTER),
         Out("user", OUT_NOTIFY_INFO), Out("profile", OUT_PROFILE)),
    CALL(WlxActivateUserShell, 1_0, Bool, CONTEXT_ARGUMENT, DESKTOP_NAME, Text("script", nullptr),
         ENVIRONMENT),
    CALL(WlxLoggedOnSAS, 1_0, SasAction, CONTEXT_ARGUMENT, SAS_ARGUMENT, RESERVED),
    CALL(WlxDisplayLockedNotice, 1_0, None, CONTEXT_ARGUMENT),
    CALL(WlxWkstaLockedSAS, 1_0, SasAction, CONTEXT_ARGUMENT, SAS_ARGUMENT),
    CALL(WlxIsLockOk, 1_0, Bool, CONTEXT_ARGUMENT),
    CALL(WlxIsLogoffOk, 1_0, Bool, CONTEXT_ARGUMENT),
    CALL(WlxLogoff, 1_0, None, CONTEXT_ARGUMENT),
    CALL(WlxShutdown, 1_0, None, CONTEXT_ARGUMENT, Number("type", SAS_ACTIONS, "SHUTDOWN")),
    CALL(WlxScreenSaverNotify, 1_1, Bool, CONTEXT_ARGUMENT, InOut("secure", BOOLS, "FALSE", OUT_BOOL)),
    CALL(WlxStartApplication, 1_1, Bool, CONTEXT_ARGUMENT, DESKTOP_NAME, ENVIRONMENT,
         Text("command", "explorer.exe")),
    CALL(WlxNetworkProviderLoad, 1_3, Bool, CONTEXT_ARGUMENT, Out("user", OUT_NOTIFY_INFO)),
    CALL(WlxDisplayStatusMessage, 1_3, Bool, CONTEXT_ARGUMENT, Given("desktop", WinlogonValue::Desktop),
         Number("options", STATUS_OPTIONS, "0"), Text("title", "Windows"), Text("message", "Please wait...")),
    CALL(WlxGetStatusMessage, 1_3, Bool, CONTEXT_ARGUMENT, Out("options", OUT_DWORD),
         Out("message", OUT_STATUS), Number("size", BUFFER_SIZES, "256")),
    CALL(WlxRemoveStatusMessage, 1_3, Bool, CONTEXT_ARGUMENT),
    CALL(WlxGetConsoleSwitchCredentials, 1_4, Bool, CONTEXT_ARGUMENT,
         Given("credentials", WinlogonValue::Credentials)),
    CALL(WlxReconnectNotify, 1_4, None, CONTEXT_ARGUMENT),
    CALL(WlxDisconnectNotify, 1_4, None, CONTEXT_ARGUMENT),
};
// clang-format on

static_assert(std::size(CALLS) == STANDIN_CALL_COUNT);

} // namespace

LONG CWlxCall::GetDefaultResult() const
{
    return result == ResultKind::SasAction ? WLX_SAS_ACTION_NONE : FALSE;
}

bool CWlxCall::IsSameResult(LONG nLeft, LONG nRight) const
{
    return result == ResultKind::Bool ? (nLeft != 0) == (nRight != 0) : nLeft == nRight;
}

std::span<const CWlxCall> GetCalls()
{
    return CALLS;
}

const CWlxCall* FindCall(const std::string& name)
{
    for (const CWlxCall& call : CALLS) {
        if (name == call.szName) {
            return &call;
        }
    }
    return nullptr;
}
