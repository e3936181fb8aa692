// Records every call as one line of an audit file: what was called, when, where the call went and what came
// of it. See AuditFile.h for the file and its setting.
//
// Nothing that the calls carry is recorded: some of it is passwords and tokens, and a plugin in front of this
// one may have put anything into the rest.

#include "AuditFile.h"
#include "LUMPlugin.h"

#include <cstdio>
#include <type_traits>

namespace {

constexpr struct
{
    int nAction;
    const char* szName;
} ACTIONS[] = {
#define ACTION(NAME)                                                                                         \
    {                                                                                                        \
        WLX_SAS_ACTION_##NAME, #NAME                                                                         \
    }
    ACTION(LOGON),           ACTION(NONE),
    ACTION(LOCK_WKSTA),      ACTION(LOGOFF),
    ACTION(SHUTDOWN),        ACTION(PWD_CHANGED),
    ACTION(TASKLIST),        ACTION(UNLOCK_WKSTA),
    ACTION(FORCE_LOGOFF),    ACTION(SHUTDOWN_POWER_OFF),
    ACTION(SHUTDOWN_REBOOT), ACTION(SHUTDOWN_SLEEP),
    ACTION(SHUTDOWN_SLEEP2), ACTION(SHUTDOWN_HIBERNATE),
    ACTION(RECONNECTED),     ACTION(DELAYED_FORCE_LOGOFF),
    ACTION(SWITCH_CONSOLE),
#undef ACTION
};

void Finish(CAuditLine& line, bool bResult)
{
    line.Finish(bResult ? "TRUE" : "FALSE");
}

void Finish(CAuditLine& line, int nAction)
{
    for (const auto& action : ACTIONS) {
        if (action.nAction == nAction) {
            line.Finish(action.szName);
            return;
        }
    }
    char szResult[CAuditLine::RESULT_WIDTH + 1];
    std::snprintf(szResult, sizeof(szResult), "action %d", nAction);
    line.Finish(szResult);
}

/// Makes a call and writes its line before and after. Nothing here needs a destructor: see lum::NextNode.
template <typename Call>
auto Record(const char* szCall, const WCHAR* szCalled, Call call)
{
    CAuditLine line(szCall, szCalled);
    if constexpr (std::is_void_v<std::invoke_result_t<Call>>) {
        call();
        line.Finish("returned");
    } else {
        const auto result = call();
        Finish(line, result);
        return result;
    }
}

/// Passes a call on to the object behind this plugin.
template <typename Result, typename... Parameters, typename... Arguments>
Result PassOn(const char* szCall, Result (lum::CGinaObject::*pfnCall)(lum::CGinaNode*, Parameters...),
              lum::CGinaNode* pNode, Arguments... arguments)
{
    lum::CGinaNode* const pNext = lum::NextNode(pNode);
    return Record(szCall, pNext->m_pItem->m_pGinaPluginContext->m_GinaPluginInfo.m_szGinaDLL,
                  [&] { return (pNext->m_pItem->*pfnCall)(pNext, arguments...); });
}

// clang-format off
#define AUDITED(RESULT, NAME, PARAMETERS, ...) \
    RESULT NAME PARAMETERS override { return PassOn("LUM" #NAME, &lum::CGinaObject::NAME, pNode, __VA_ARGS__); }

#define AUDITED_HERE(RESULT, NAME, PARAMETERS, CALL) \
    RESULT NAME PARAMETERS override { return Record("LUM" #NAME, TEXT("this plugin"), [&] { return CALL; }); }

class CAuditPlugin final : public lum::CPlugin
{
public:
    CAuditPlugin() : CPlugin(TEXT("Records every call")) {}

    AUDITED_HERE(bool, Negotiate, (lum::CGinaPluginInfo* pInfo), CPlugin::Negotiate(pInfo))
    AUDITED_HERE(BOOL, Initialize, (lum::CLUMObject*, DWORD, LPWSTR, HANDLE, PVOID, PVOID, PVOID*, DWORD, DWORD), true)
    AUDITED_HERE(void, DynamicUnload, (), void())
    AUDITED_HERE(bool, QueryPlugin, (lum::CGinaPluginInfo*, DWORD, DWORD, DWORD), false)
    AUDITED_HERE(bool, QueryPluginInfo, (lum::CGinaPluginInfo* pInfo), CPlugin::QueryPluginInfo(pInfo))

    AUDITED(void, DisplaySASNotice, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    AUDITED(int, LoggedOutSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType, PLUID pId, PSID pSid, PDWORD pdwOptions, PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pInfo, PVOID* ppProfile), pContext, dwSasType, pId, pSid, pdwOptions, phToken, pInfo, ppProfile)
    AUDITED(BOOL, ActivateUserShell, (lum::CGinaNode* pNode, PVOID pContext, PWSTR szDesktop, PWSTR szScript, PVOID pEnvironment), pContext, szDesktop, szScript, pEnvironment)
    AUDITED(int, LoggedOnSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType, PVOID pReserved), pContext, dwSasType, pReserved)
    AUDITED(void, DisplayLockedNotice, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    AUDITED(BOOL, IsLockOk, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    AUDITED(int, WkstaLockedSAS, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwSasType), pContext, dwSasType)
    AUDITED(BOOL, IsLogoffOk, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    AUDITED(void, Logoff, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    AUDITED(void, Shutdown, (lum::CGinaNode* pNode, PVOID pContext, DWORD dwType), pContext, dwType)
    AUDITED(BOOL, StartApplication, (lum::CGinaNode* pNode, PVOID pContext, PWSTR szDesktop, PVOID pEnvironment, PWSTR szCommand), pContext, szDesktop, pEnvironment, szCommand)
    AUDITED(BOOL, ScreenSaverNotify, (lum::CGinaNode* pNode, PVOID pContext, BOOL* pSecure), pContext, pSecure)
    AUDITED(BOOL, NetworkProviderLoad, (lum::CGinaNode* pNode, PVOID pContext, PWLX_MPR_NOTIFY_INFO pInfo), pContext, pInfo)
    AUDITED(BOOL, DisplayStatusMessage, (lum::CGinaNode* pNode, PVOID pContext, HDESK hDesktop, DWORD dwOptions, PWSTR szTitle, PWSTR szMessage), pContext, hDesktop, dwOptions, szTitle, szMessage)
    AUDITED(BOOL, GetStatusMessage, (lum::CGinaNode* pNode, PVOID pContext, DWORD* pdwOptions, PWSTR szMessage, DWORD dwSize), pContext, pdwOptions, szMessage, dwSize)
    AUDITED(BOOL, RemoveStatusMessage, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    AUDITED(BOOL, GetConsoleSwitchCredentials, (lum::CGinaNode* pNode, PVOID pContext, PVOID pCredentials), pContext, pCredentials)
    AUDITED(void, ReconnectNotify, (lum::CGinaNode* pNode, PVOID pContext), pContext)
    AUDITED(void, DisconnectNotify, (lum::CGinaNode* pNode, PVOID pContext), pContext)
};
// clang-format on

CAuditPlugin s_plugin;

} // namespace

LUM_PLUGIN(s_plugin)
