#include "Winlogon.h"

#include <type_traits>
#include <utility>

#include <winwlx.h>

namespace {

ULONG_PTR g_context;
std::vector<std::string> g_callbacks;

// Only its address matters: nobody but Winlogon may look behind the handle.
char g_handle;

// S-1-5-5-0-1, a logon SID.
BYTE g_logonSid[] = {1, 3, 0, 0, 0, 0, 0, 5, 5, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0};
WCHAR g_environment[] = TEXT("SystemRoot=C:\\WINNT\0USERNAME=standin\0");
// As large as the structure of the version that is asked for, which the first word tells.
DWORD g_credentials[64] = {1};
constexpr ULONG_PTR DESKTOP_HANDLE = 0xDE50;

template <typename T>
std::string DescribeArgument(T argument)
{
    if constexpr (std::is_pointer_v<T>) {
        const auto value = reinterpret_cast<ULONG_PTR>(argument);
        return value == Winlogon::GetValue(WinlogonValue::WlxHandle) ? "handle"
                                                                     : OUT_POINTER.pfnDescribe({value, {}});
    } else {
        return NUMBERS.Describe(static_cast<DWORD>(argument));
    }
}

template <typename... Arguments>
void NoteCallback(const char* szName, Arguments... arguments)
{
    std::string text;
    ((text += (text.empty() ? "" : ", ") + DescribeArgument(arguments)), ...);
    g_callbacks.push_back(std::string(szName) + '(' + text + ')');
}

struct CCallbackName
{
    const char* szName;
};

/// A callback of the dispatch table: it is noted, and answers success where it has an answer.
template <const CCallbackName& Name, typename Function>
struct Callback;
template <const CCallbackName& Name, typename Result, typename... Arguments>
struct Callback<Name, Result(WINAPI*)(Arguments...)>
{
    static Result WINAPI Call(Arguments... arguments)
    {
        NoteCallback(Name.szName, arguments...);
        return Result(TRUE);
    }
};

#define CALLBACK_ENTRIES(ENTRY)                                                                              \
    ENTRY(WlxUseCtrlAltDel)                                                                                  \
    ENTRY(WlxSetContextPointer)                                                                              \
    ENTRY(WlxSasNotify)                                                                                      \
    ENTRY(WlxSetTimeout)                                                                                     \
    ENTRY(WlxAssignShellProtection)                                                                          \
    ENTRY(WlxMessageBox)                                                                                     \
    ENTRY(WlxDialogBox)                                                                                      \
    ENTRY(WlxDialogBoxParam)                                                                                 \
    ENTRY(WlxDialogBoxIndirect)                                                                              \
    ENTRY(WlxDialogBoxIndirectParam)                                                                         \
    ENTRY(WlxSwitchDesktopToUser)                                                                            \
    ENTRY(WlxSwitchDesktopToWinlogon)                                                                        \
    ENTRY(WlxChangePasswordNotify)                                                                           \
    ENTRY(WlxGetSourceDesktop)                                                                               \
    ENTRY(WlxSetReturnDesktop)                                                                               \
    ENTRY(WlxCreateUserDesktop)                                                                              \
    ENTRY(WlxChangePasswordNotifyEx)                                                                         \
    ENTRY(WlxCloseUserDesktop)                                                                               \
    ENTRY(WlxSetOption)                                                                                      \
    ENTRY(WlxGetOption)                                                                                      \
    ENTRY(WlxWin31Migrate)                                                                                   \
    ENTRY(WlxQueryClientCredentials)                                                                         \
    ENTRY(WlxQueryInetConnectorCredentials)                                                                  \
    ENTRY(WlxDisconnect)                                                                                     \
    ENTRY(WlxQueryTerminalServicesData)                                                                      \
    ENTRY(WlxQueryConsoleSwitchCredentials)                                                                  \
    ENTRY(WlxQueryTsLogonCredentials)

#define CALLBACK_NAME(NAME) constexpr CCallbackName NAME##_NAME = {#NAME};
CALLBACK_ENTRIES(CALLBACK_NAME)

#define CALLBACK_ENTRY(NAME) Callback<NAME##_NAME, decltype(WLX_DISPATCH_VERSION_1_4::NAME)>::Call,
WLX_DISPATCH_VERSION_1_4 g_dispatchTable = {CALLBACK_ENTRIES(CALLBACK_ENTRY)};

} // namespace

ULONG_PTR Winlogon::GetValue(WinlogonValue value)
{
    switch (value) {
    case WinlogonValue::WlxHandle:
        return reinterpret_cast<ULONG_PTR>(&g_handle);
    case WinlogonValue::DispatchTable:
        return reinterpret_cast<ULONG_PTR>(&g_dispatchTable);
    case WinlogonValue::Context:
        return g_context;
    case WinlogonValue::LogonSid:
        return reinterpret_cast<ULONG_PTR>(g_logonSid);
    case WinlogonValue::Environment:
        return reinterpret_cast<ULONG_PTR>(g_environment);
    case WinlogonValue::Desktop:
        return DESKTOP_HANDLE;
    case WinlogonValue::Credentials:
        return reinterpret_cast<ULONG_PTR>(g_credentials);
    case WinlogonValue::Nothing:
        break;
    }
    return 0;
}

void Winlogon::SetContext(ULONG_PTR context)
{
    g_context = context;
}

std::vector<std::string> Winlogon::TakeCallbacks()
{
    return std::exchange(g_callbacks, {});
}
