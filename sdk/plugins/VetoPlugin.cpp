// Refuses what its settings say: HKEY_LOCAL_MACHINE\SOFTWARE\ORX\LUM\Plugins\Veto, each a REG_DWORD that
// refuses when it is not 0:
//
//     RefuseLogon    nobody is logged on
//     RefuseLock     the workstation is not locked
//     RefuseLogoff   a user who asks to log off stays; a forced logoff and a shutdown go on
//
// Asked through the control channel with 1, 2 or 3, it says whether it refuses the first, second or third.
//
// A value of any other form refuses nothing: a mistake in the registry locks nobody out.

#include <iterator>

#include "LUMPlugin.h"
#include "Setting.h"

namespace {

constexpr WCHAR KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Plugins\\Veto");
constexpr WCHAR REFUSE_LOGON[] = TEXT("RefuseLogon");
constexpr WCHAR REFUSE_LOCK[] = TEXT("RefuseLock");
constexpr WCHAR REFUSE_LOGOFF[] = TEXT("RefuseLogoff");

bool IsRefused(const WCHAR* szWhat)
{
    return ReadNumber(KEY, szWhat) != 0;
}

class CVetoPlugin final : public lum::CPlugin
{
public:
    CVetoPlugin() : CPlugin(TEXT("Refuses logon, lock or logoff")) {}

    int LoggedOutSAS(lum::CGinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PLUID pAuthenticationId,
                     PSID pLogonSid, PDWORD pdwOptions, PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo,
                     PVOID* pProfile) override
    {
        // Refused before anybody is asked for a password, and before there is a token that would be lost.
        if (IsRefused(REFUSE_LOGON)) {
            return WLX_SAS_ACTION_NONE;
        }
        return CPlugin::LoggedOutSAS(pNode, pWlxContext, dwSasType, pAuthenticationId, pLogonSid, pdwOptions,
                                     phToken, pNprNotifyInfo, pProfile);
    }

    /// A lock or logoff from the standard GINA's own dialog comes this way first; a logoff does not go
    /// through IsLogoffOk.
    int LoggedOnSAS(lum::CGinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PVOID pReserved) override
    {
        const int nAction = CPlugin::LoggedOnSAS(pNode, pWlxContext, dwSasType, pReserved);
        const bool bRefused = (nAction == WLX_SAS_ACTION_LOCK_WKSTA && IsRefused(REFUSE_LOCK)) ||
                              (nAction == WLX_SAS_ACTION_LOGOFF && IsRefused(REFUSE_LOGOFF));
        return bRefused ? WLX_SAS_ACTION_NONE : nAction;
    }

    BOOL IsLockOk(lum::CGinaNode* pNode, PVOID pWlxContext) override
    {
        return IsRefused(REFUSE_LOCK) ? FALSE : CPlugin::IsLockOk(pNode, pWlxContext);
    }

    BOOL IsLogoffOk(lum::CGinaNode* pNode, PVOID pWlxContext) override
    {
        return IsRefused(REFUSE_LOGOFF) ? FALSE : CPlugin::IsLogoffOk(pNode, pWlxContext);
    }

    /// Answers an administrator who asks what it refuses: 1 logon, 2 lock, 3 logoff.
    bool QueryPlugin(lum::CGinaPluginInfo*, DWORD dwWhat, DWORD, DWORD) override
    {
        const WCHAR* const refusals[] = {REFUSE_LOGON, REFUSE_LOCK, REFUSE_LOGOFF};
        return dwWhat - 1 < std::size(refusals) && IsRefused(refusals[dwWhat - 1]);
    }
};

CVetoPlugin s_plugin;

} // namespace

LUM_PLUGIN(s_plugin)
