#pragma once

#include "CriticalSection.h"
#include "GinaNames.h"
#include "GlobalObject.h"
#include "Owned.h"
#include "RegistryClasses.h"

// Winlogon's values, in the order in which they are opened, held and closed.
// clang-format off
#define WINLOGON_VALUES(VALUE) \
    VALUE(AutoAdminLogon, CRegistryDword) \
    VALUE(AutoLogonCount, CRegistryDword) \
    VALUE(AutoRestartShell, CRegistryDword) \
    VALUE(AllowMultipleTSSessions, CRegistryDword) \
    VALUE(DisableCAD, CRegistryDword) \
    VALUE(DisableLockWorkstation, CRegistryDword) \
    VALUE(ForceUnlockLogon, CRegistryDword) \
    VALUE(HibernationPreviouslyEnabled, CRegistryDword) \
    VALUE(IgnoreShiftOverride, CRegistryDword) \
    VALUE(Key, CRegistryDword) \
    VALUE(LogonType, CRegistryDword) \
    VALUE(PasswordExpiryWarning, CRegistryDword) \
    VALUE(SFCDisable, CRegistryDword) \
    VALUE(SFCQuota, CRegistryDword) \
    VALUE(ShowLogonOptions, CRegistryDword) \
    VALUE(AllocateCdroms, CRegistryString) \
    VALUE(AllocateDasd, CRegistryString) \
    VALUE(AllocateFloppies, CRegistryString) \
    VALUE(AltDefaultDomainName, CRegistryString) \
    VALUE(AltDefaultUserName, CRegistryString) \
    VALUE(CachedLogonsCount, CRegistryString) \
    VALUE(DebugServerCommand, CRegistryString) \
    VALUE(DefaultDomainName, CRegistryString) \
    VALUE(DefaultPassword, CRegistryString) \
    VALUE(DefaultUserName, CRegistryString) \
    VALUE(DontDisplayLastUserName, CRegistryString) \
    VALUE(GinaDLL, CRegistryString) \
    VALUE(LegalNoticeCaption, CRegistryString) \
    VALUE(LegalNoticeText, CRegistryString) \
    VALUE(NoPopupsOnBoot, CRegistryString) \
    VALUE(PowerdownAfterShutdown, CRegistryString) \
    VALUE(ReportBootOk, CRegistryString) \
    VALUE(ScRemoveOption, CRegistryString) \
    VALUE(Shell, CRegistryString) \
    VALUE(ShutdownWithoutLogon, CRegistryString) \
    VALUE(System, CRegistryString) \
    VALUE(UIHost, CRegistryString) \
    VALUE(Userinit, CRegistryString) \
    VALUE(VmApplet, CRegistryString) \
    VALUE(WinStationsDisabled, CRegistryString)
// clang-format on

/// Winlogon's own configuration key. Of its values only GinaDLL is ever written.
///
/// Operations never throw. GetGinaDLL and SetGinaDLL may be called from all threads.
class CWinlogonRegistry : public CGlobalObject
{
public:
    /// Opens the values and reads each once. Nothing is created: the object of a missing value has an empty
    /// cache. If the key cannot be opened, or a value exists and cannot be read, its object is null, with a
    /// warning. The password is not kept.
    CWinlogonRegistry(const WCHAR* szAPPArg, const WCHAR* szMTMArg) noexcept;
    ~CWinlogonRegistry();
    CWinlogonRegistry(const CWinlogonRegistry&) = delete;
    CWinlogonRegistry& operator=(const CWinlogonRegistry&) = delete;

    /// Copies the name of the GINA that Winlogon loads, as the registry has it now, into a buffer of cchDest
    /// characters, cut to fit and terminated. False when there is none or it cannot be read.
    bool GetGinaDLL(WCHAR* szDest, DWORD cchDest, bool bRefresh) noexcept;

    /// Writes the name of the GINA that Winlogon is to load. Makes the key and the value first if they could
    /// not be opened before. A failed write is reported and still returns true; false only when there is
    /// nothing to write to. A null name is only warned of.
    bool SetGinaDLL(const WCHAR* szValue) noexcept;

#define WINLOGON_MEMBER(NAME, KIND) COwned<KIND> m_p##NAME;
    WINLOGON_VALUES(WINLOGON_MEMBER)
#undef WINLOGON_MEMBER

private:
    static constexpr const WCHAR* s_szClass = TEXT("CWinlogonRegistry");

    void MakeGinaDLL();

    /// Guards m_pGinaDLL, whose cache reads and writes share.
    CCriticalSection m_GinaDLLLock;
};
