#include "WinlogonObject.h"

#include "NullWarnings.h"
#include "RequireArgument.h"
#include "guard/FaultGuard.h"

namespace {

constexpr WCHAR CLASS_NAME[] = TEXT("CWinlogonObject");

// The table of the highest version. The tables of lower versions are the beginning of it.
using Table = WLX_DISPATCH_VERSION_1_4;

/// One callback: the interface version since which Winlogon offers it, and the function that copies it into
/// its member. With a null table that function clears the member. It returns whether the member holds
/// something.
struct CCallbackRow
{
    DWORD dwSince;
    bool (*pfnCopy)(CWinlogonObject& object, const Table* pTable);
};

template <auto Member, auto TableEntry>
constexpr CCallbackRow Entry(DWORD dwSince)
{
    return {dwSince, [](CWinlogonObject& object, const Table* pTable) {
                object.*Member = pTable != nullptr ? pTable->*TableEntry : nullptr;
                return object.*Member != nullptr;
            }};
}

// In the order in which they are copied. Memory behind the last entry of a table's version may be unreadable.
constexpr CCallbackRow CALLBACKS[] = {
    Entry<&CWinlogonObject::m_pWlxAssignShellProtection, &Table::WlxAssignShellProtection>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxChangePasswordNotify, &Table::WlxChangePasswordNotify>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxDialogBox, &Table::WlxDialogBox>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxDialogBoxIndirect, &Table::WlxDialogBoxIndirect>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxDialogBoxIndirectParam, &Table::WlxDialogBoxIndirectParam>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxDialogBoxParam, &Table::WlxDialogBoxParam>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxMessageBox, &Table::WlxMessageBox>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxSasNotify, &Table::WlxSasNotify>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxSetContextPointer, &Table::WlxSetContextPointer>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxSetTimeout, &Table::WlxSetTimeout>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxSwitchDesktopToUser, &Table::WlxSwitchDesktopToUser>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxSwitchDesktopToWinlogon, &Table::WlxSwitchDesktopToWinlogon>(
        WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxUseCtrlAltDel, &Table::WlxUseCtrlAltDel>(WLX_VERSION_1_0),
    Entry<&CWinlogonObject::m_pWlxChangePasswordNotifyEx, &Table::WlxChangePasswordNotifyEx>(WLX_VERSION_1_1),
    Entry<&CWinlogonObject::m_pWlxCreateUserDesktop, &Table::WlxCreateUserDesktop>(WLX_VERSION_1_1),
    Entry<&CWinlogonObject::m_pWlxGetSourceDesktop, &Table::WlxGetSourceDesktop>(WLX_VERSION_1_1),
    Entry<&CWinlogonObject::m_pWlxSetReturnDesktop, &Table::WlxSetReturnDesktop>(WLX_VERSION_1_1),
    Entry<&CWinlogonObject::m_pWlxCloseUserDesktop, &Table::WlxCloseUserDesktop>(WLX_VERSION_1_2),
    Entry<&CWinlogonObject::m_pWlxDisconnect, &Table::WlxDisconnect>(WLX_VERSION_1_3),
    Entry<&CWinlogonObject::m_pWlxGetOption, &Table::WlxGetOption>(WLX_VERSION_1_3),
    Entry<&CWinlogonObject::m_pWlxQueryClientCredentials, &Table::WlxQueryClientCredentials>(WLX_VERSION_1_3),
    Entry<&CWinlogonObject::m_pWlxQueryInetConnectorCredentials, &Table::WlxQueryInetConnectorCredentials>(
        WLX_VERSION_1_3),
    Entry<&CWinlogonObject::m_pWlxQueryTerminalServicesData, &Table::WlxQueryTerminalServicesData>(
        WLX_VERSION_1_3),
    Entry<&CWinlogonObject::m_pWlxSetOption, &Table::WlxSetOption>(WLX_VERSION_1_3),
    Entry<&CWinlogonObject::m_pWlxWin31Migrate, &Table::WlxWin31Migrate>(WLX_VERSION_1_3),
    Entry<&CWinlogonObject::m_pWlxQueryConsoleSwitchCredentials, &Table::WlxQueryConsoleSwitchCredentials>(
        WLX_VERSION_1_4),
    Entry<&CWinlogonObject::m_pWlxQueryTsLogonCredentials, &Table::WlxQueryTsLogonCredentials>(
        WLX_VERSION_1_4),
};

} // namespace

CWinlogonObject::CWinlogonObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg) noexcept
    : CGlobalObject(szAPPArg, szMTMArg), m_dwVersion(0), m_pWinlogonFunctions(nullptr)
{
    const CConstructionTrace trace(*this, CLASS_NAME);
    for (const CCallbackRow& row : CALLBACKS) {
        row.pfnCopy(*this, nullptr);
    }
}

CWinlogonObject::~CWinlogonObject()
{
    const CDestructionTrace trace(*this, CLASS_NAME);
}

bool CWinlogonObject::SetWinlogonObject(PVOID pWinlogonFunctions, DWORD dwVersion) noexcept
{
    const COperation op(*this, CLASS_NAME, TEXT("SetWinlogonObject"));
    return op.Run(Absorb<>(), [&] {
        m_dwVersion = dwVersion;
        CopyFunctions(pWinlogonFunctions);
        return true;
    });
}

bool CWinlogonObject::CopyFunctions(PVOID pWinlogonFunctions) noexcept
{
    const COperation op(*this, CLASS_NAME, TEXT("CopyFunctions"));
    return op.Run(Absorb<CBadArgException>(), [&] {
        for (const CCallbackRow& row : CALLBACKS) {
            row.pfnCopy(*this, nullptr);
        }
        m_pWinlogonFunctions = pWinlogonFunctions;
        RequireArgument(*this, pWinlogonFunctions, TEXT("pWinlogonFunctions"));
        RequireArgument(*this, m_dwVersion >= WLX_VERSION_1_0, TEXT("m_dwVersion"));
        // The caller's pointer may be bad.
        CallWithinHost([&] {
            for (const CCallbackRow& row : CALLBACKS) {
                if (row.dwSince <= m_dwVersion &&
                    !row.pfnCopy(*this, static_cast<Table*>(pWinlogonFunctions))) {
                    op.Warn(ERR_PUSHING_NULL);
                }
            }
        });
        return true;
    });
}

PVOID CWinlogonObject::GetWinlogonFunctions() noexcept
{
    return PullValue(*this, CLASS_NAME, TEXT("GetWinlogonFunctions"), m_pWinlogonFunctions);
}

PWLX_SET_TIMEOUT CWinlogonObject::GetWlxSetTimeout() noexcept
{
    return PullValue(*this, CLASS_NAME, TEXT("GetWlxSetTimeout"), m_pWlxSetTimeout);
}
