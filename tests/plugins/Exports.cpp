// The 24 exports of the test plugin and the one more through which a test drives it. They are written out
// rather than made by LUM_PLUGIN, because they also answer what no well-behaved plugin does.

#include "LUMPlugin.h"
#include "TestPluginState.h"

namespace {

/// Records a call and does what comes before anything else. A call may end here for good, so nothing here
/// needs a destructor.
template <typename... Arguments>
PluginRecord& Begin(PluginCall call, Arguments... arguments)
{
    static_assert(sizeof...(Arguments) <= PLUGIN_MAX_ARGUMENTS);
    PluginRecord& record = g_TestPlugin.AddRecord(call);
    DWORD dwIndex = 0;
    ((record.argument[dwIndex++] = AsValue(arguments)), ...);
    g_TestPlugin.Act(record);
    return record;
}

LONG End(PluginRecord& record, LONG nResult)
{
    record.bReturned = TRUE;
    record.nResult = nResult;
    return nResult;
}

/// Calls the next object; 0 for what has no result.
template <typename Result, typename... Parameters, typename... Arguments>
LONG CallNext(Result (lum::CGinaObject::*pfnCall)(lum::CGinaNode*, Parameters...), lum::CGinaNode* pNode,
              Arguments... arguments)
{
    lum::CGinaNode* const pNext = lum::NextNode(pNode);
    if constexpr (std::is_void_v<Result>) {
        (pNext->m_pItem->*pfnCall)(pNext, arguments...);
        return 0;
    } else {
        return (pNext->m_pItem->*pfnCall)(pNext, arguments...);
    }
}

/// Serves a forwarded call.
template <typename Call, typename... Arguments>
LONG PassCall(PluginCall call, Call pfnCall, lum::CGinaNode* pNode, Arguments... arguments)
{
    PluginRecord& record = Begin(call, pNode, arguments...);
    const PluginAction action = g_TestPlugin.GetAction(call);
    LONG nResult = g_TestPlugin.GetResult(call);
    if (action != PluginAction::Answer) {
        const LONG nNext = CallNext(pfnCall, pNode, arguments...);
        nResult = action == PluginAction::Change ? nResult : nNext;
    }
    return End(record, nResult);
}

/// Serves a call that is not forwarded.
template <typename... Arguments>
LONG Serve(PluginCall call, Arguments... arguments)
{
    PluginRecord& record = Begin(call, arguments...);
    return End(record, g_TestPlugin.GetResult(call));
}

LONG Negotiate(lum::CGinaPluginInfo* pInfo)
{
    const LONG nResult = Serve(PluginCall::Negotiate, pInfo);
    const auto replace = [](DWORD& dwVersion, DWORD dwNew) { dwVersion = dwNew != 0 ? dwNew : dwVersion; };
    replace(pInfo->m_dwWlxVersion, g_TestPlugin.GetWlxVersion());
    replace(pInfo->m_dwLUMVersion, g_TestPlugin.GetLUMVersion());
    return nResult;
}

constexpr TestPluginInterface INTERFACE = {
    sizeof(TestPluginInterface),
    Exposed<g_TestPlugin, &CTestPluginState::Reset>::Call,
    Exposed<g_TestPlugin, &CTestPluginState::SetVersions>::Call,
    Exposed<g_TestPlugin, &CTestPluginState::SetAction>::Call,
    Exposed<g_TestPlugin, &CTestPluginState::SetFailure>::Call,
    Exposed<g_TestPlugin, &CTestPluginState::SetHook>::Call,
    Exposed<g_TestPlugin, &CTestPluginState::SetCounter>::Call,
    Exposed<g_TestPlugin, &CTestPluginState::GetRecordCount>::Call,
    Exposed<g_TestPlugin, &CTestPluginState::GetRecord>::Call,
};

} // namespace

// clang-format off
#define SERVED(NAME, PARAMETERS, ...) LUM_EXPORT(LONG, LUM##NAME, PARAMETERS, Serve(PluginCall::NAME, __VA_ARGS__))
#define FORWARDED(NAME, PARAMETERS, ...) LUM_EXPORT(LONG, LUM##NAME, PARAMETERS, PassCall(PluginCall::NAME, &lum::CGinaObject::NAME, pNode, __VA_ARGS__))

LUM_EXPORT(LONG, LUMNegotiate, (lum::CGinaPluginInfo* pInfo), Negotiate(pInfo))
SERVED(QueryPlugin, (lum::CGinaPluginInfo* pInfo, DWORD dw1, DWORD dw2, DWORD dw3), pInfo, dw1, dw2, dw3)
SERVED(QueryPluginInfo, (lum::CGinaPluginInfo* pInfo), pInfo)
LUM_EXPORT(LONG, LUMDynamicUnload, (), Serve(PluginCall::DynamicUnload))
SERVED(Initialize, (lum::CLUMObject* pObject, DWORD dwInstances, LPWSTR szWinsta, HANDLE hWlx, PVOID pReserved, PVOID pFunctions, PVOID* ppContext, DWORD dwFlag1, DWORD dwFlag2), pObject, dwInstances, szWinsta, hWlx, pReserved, pFunctions, ppContext, dwFlag1, dwFlag2)
FORWARDED(DisplaySASNotice, (lum::CGinaNode* pNode, PVOID pContext), pContext)
FORWARDED(LoggedOutSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType, PLUID pId, PSID pSid, PDWORD pdwOptions, PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pInfo, PVOID* ppProfile), pContext, dwSasType, pId, pSid, pdwOptions, phToken, pInfo, ppProfile)
FORWARDED(ActivateUserShell, (lum::CGinaNode* pNode, PVOID pContext, PWSTR szDesktop, PWSTR szScript, PVOID pEnvironment), pContext, szDesktop, szScript, pEnvironment)
FORWARDED(LoggedOnSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType, PVOID pReserved), pContext, dwSasType, pReserved)
FORWARDED(DisplayLockedNotice, (lum::CGinaNode* pNode, PVOID pContext), pContext)
FORWARDED(IsLockOk, (lum::CGinaNode* pNode, PVOID pContext), pContext)
FORWARDED(WkstaLockedSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType), pContext, dwSasType)
FORWARDED(IsLogoffOk, (lum::CGinaNode* pNode, PVOID pContext), pContext)
FORWARDED(Logoff, (lum::CGinaNode* pNode, PVOID pContext), pContext)
FORWARDED(Shutdown, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwType), pContext, dwType)
FORWARDED(StartApplication, (lum::CGinaNode* pNode, PVOID pContext, PWSTR szDesktop, PVOID pEnvironment, PWSTR szCommand), pContext, szDesktop, pEnvironment, szCommand)
FORWARDED(ScreenSaverNotify, (lum::CGinaNode* pNode, PVOID pContext, BOOL* pSecure), pContext, pSecure)
FORWARDED(NetworkProviderLoad, (lum::CGinaNode* pNode, PVOID pContext, PWLX_MPR_NOTIFY_INFO pInfo), pContext, pInfo)
FORWARDED(DisplayStatusMessage, (lum::CGinaNode* pNode, PVOID pContext, HDESK hDesktop, DWORD dwOptions, PWSTR szTitle, PWSTR szMessage), pContext, hDesktop, dwOptions, szTitle, szMessage)
FORWARDED(GetStatusMessage, (lum::CGinaNode* pNode, PVOID pContext, DWORD* pdwOptions, PWSTR szMessage, DWORD dwSize), pContext, pdwOptions, szMessage, dwSize)
FORWARDED(RemoveStatusMessage, (lum::CGinaNode* pNode, PVOID pContext), pContext)
FORWARDED(GetConsoleSwitchCredentials, (lum::CGinaNode* pNode, PVOID pContext, PVOID pCredentials), pContext, pCredentials)
FORWARDED(ReconnectNotify, (lum::CGinaNode* pNode, PVOID pContext), pContext)
FORWARDED(DisconnectNotify, (lum::CGinaNode* pNode, PVOID pContext), pContext)
// clang-format on

extern "C" const TestPluginInterface* WINAPI TestPlugin()
{
    return &INTERFACE;
}
