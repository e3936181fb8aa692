// Records every call as one line of an audit file: what was called, when, where the call went and what
// came of it. See AuditFile.h for the file and its setting.
//
// Nothing of what the calls carry is recorded but the kind of event that came: some of it are passwords
// and tokens, and a plugin in front may have put anything into the rest.

#include "AuditFile.h"
#include "LUMPlugin.h"

#include <cstdio>

namespace {

constexpr WCHAR SELF[] = TEXT("audit plugin");

struct CName
{
    int nValue;
    const char* szName;
};

constexpr CName ACTIONS[] = {
    {WLX_SAS_ACTION_LOGON, "LOGON"},
    {WLX_SAS_ACTION_NONE, "NONE"},
    {WLX_SAS_ACTION_LOCK_WKSTA, "LOCK_WKSTA"},
    {WLX_SAS_ACTION_LOGOFF, "LOGOFF"},
    {WLX_SAS_ACTION_SHUTDOWN, "SHUTDOWN"},
    {WLX_SAS_ACTION_PWD_CHANGED, "PWD_CHANGED"},
    {WLX_SAS_ACTION_TASKLIST, "TASKLIST"},
    {WLX_SAS_ACTION_UNLOCK_WKSTA, "UNLOCK_WKSTA"},
    {WLX_SAS_ACTION_FORCE_LOGOFF, "FORCE_LOGOFF"},
    {WLX_SAS_ACTION_SHUTDOWN_POWER_OFF, "SHUTDOWN_POWER_OFF"},
    {WLX_SAS_ACTION_SHUTDOWN_REBOOT, "SHUTDOWN_REBOOT"},
    {WLX_SAS_ACTION_SHUTDOWN_SLEEP, "SHUTDOWN_SLEEP"},
    {WLX_SAS_ACTION_SHUTDOWN_SLEEP2, "SHUTDOWN_SLEEP2"},
    {WLX_SAS_ACTION_SHUTDOWN_HIBERNATE, "SHUTDOWN_HIBERNATE"},
    {WLX_SAS_ACTION_RECONNECTED, "RECONNECTED"},
    {WLX_SAS_ACTION_DELAYED_FORCE_LOGOFF, "DELAYED_FORCE_LOGOFF"},
    {WLX_SAS_ACTION_SWITCH_CONSOLE, "SWITCH_CONSOLE"},
};

/// What a call gives, as the line shows it. BOOL and int are one type, so the call says which it is.
enum class Kind
{
    YesNo,
    Action
};

void FinishLine(CAuditLine& line, Kind kind, int nResult)
{
    if (kind == Kind::YesNo) {
        line.Finish(nResult != FALSE ? "TRUE" : "FALSE");
        return;
    }
    char szNumber[CAuditLine::RESULT_WIDTH + 1];
    std::snprintf(szNumber, sizeof(szNumber), "action %d", nResult);
    const char* szResult = szNumber;
    for (const CName& action : ACTIONS) {
        szResult = action.nValue == nResult ? action.szName : szResult;
    }
    line.Finish(szResult);
}

/// Makes a call with its line around it.
template <Kind kind = Kind::YesNo, typename Call>
auto Record(const char* szCall, const WCHAR* szCalled, Call call)
{
    CAuditLine line(szCall, szCalled);
    if constexpr (std::is_void_v<decltype(call())>) {
        call();
        line.Finish("returned");
    } else {
        const auto result = call();
        FinishLine(line, kind, result);
        return result;
    }
}

/// A chained call goes to the object behind this plugin.
template <Kind kind = Kind::YesNo, typename Call>
auto Record(const char* szCall, const lum::CGinaNode* pNode, Call call)
{
    return Record<kind>(szCall, lum::NextObject(pNode).m_pGinaPluginContext->m_GinaPluginInfo.m_szGinaDLL,
                        call);
}

class CAuditPlugin final : public lum::CPlugin
{
public:
    CAuditPlugin() : CPlugin(TEXT("Records every call")) {}

    bool Negotiate(lum::CGinaPluginInfo* pPluginInfo) override
    {
        return Record("LUMNegotiate", SELF, [&] { return CPlugin::Negotiate(pPluginInfo); });
    }
};

} // namespace
