#include <type_traits>

#include "ChainMachine.h"

namespace {

constexpr const char* FAILED = "[WARNING] The requested operation failed or it was cancelled";

class WinlogonRegistry : public CChainMachine
{
protected:
    WinlogonRegistry() { RegDeleteKeyW(HKEY_LOCAL_MACHINE, WINLOGON_KEY); }

    static std::string Get(CWinlogonRegistry& registry, DWORD cchName = 260)
    {
        WCHAR szName[260] = {};
        return registry.GetGinaDLL(szName, cchName, false) ? Narrow(szName) : "(failed)";
    }

    std::string Lines(const std::string& start) const
    {
        std::string ends;
        for (const std::string& line : Log()) {
            ends += line.find(start) == 0 ? line.substr(start.size()) + " " : "";
        }
        return ends;
    }
};

TEST_F(WinlogonRegistry, WithoutTheKeyEachValueIsMissedInOrder)
{
    CWinlogonRegistry registry(LUM_GINA_APP, LUM_GINA_MTM);
    EXPECT_EQ("AutoAdminLogon AutoLogonCount AutoRestartShell AllowMultipleTSSessions DisableCAD "
              "DisableLockWorkstation ForceUnlockLogon HibernationPreviouslyEnabled IgnoreShiftOverride Key "
              "LogonType PasswordExpiryWarning SFCDisable SFCQuota ShowLogonOptions AllocateCdroms "
              "AllocateDasd AllocateFloppies AltDefaultDomainName AltDefaultUserName CachedLogonsCount "
              "DebugServerCommand DefaultDomainName DefaultPassword DefaultUserName "
              "DontDisplayLastUserName GinaDLL LegalNoticeCaption LegalNoticeText NoPopupsOnBoot "
              "PowerdownAfterShutdown ReportBootOk ScRemoveOption Shell ShutdownWithoutLogon System UIHost "
              "Userinit VmApplet WinStationsDisabled ",
              Lines("[WARNING] Winlogon key could not be loaded, Key: "));
    static_assert(std::is_same_v<decltype(registry.m_pShowLogonOptions), COwned<CRegistryDword>>);
    static_assert(std::is_same_v<decltype(registry.m_pAllocateCdroms), COwned<CRegistryString>>);
    ClearLog();
    EXPECT_EQ("(failed)", Get(registry));
    EXPECT_EQ(
        (std::vector<std::string>{
            "[EXCEPTION] Unable to read from registry, Registry Value: GinaDLL, Error: 0xffffffff", FAILED}),
        Log());
    EXPECT_TRUE(registry.SetGinaDLL(nullptr));
    EXPECT_EQ("(none)", GetValue(WINLOGON_KEY, WINLOGON_GINA_DLL));
    EXPECT_TRUE(registry.SetGinaDLL(TEXT("lum_gina.dll")));
    EXPECT_EQ("\"lum_gina.dll\"", GetValue(WINLOGON_KEY, WINLOGON_GINA_DLL));
    EXPECT_EQ("lum_gina.dll", Get(registry));
    EXPECT_TRUE(registry.m_pGinaDLL->DeleteRegistryValue());
    EXPECT_EQ("(failed)", Get(registry));
    EXPECT_EQ("(none)", GetValue(WINLOGON_KEY, WINLOGON_GINA_DLL)) << "an empty one would keep Winlogon down";
}

TEST_F(WinlogonRegistry, MissingValuesStayMissingAndUnreadableOnesAreDoneWithout)
{
    SetString(WINLOGON_KEY, TEXT("Shell"), TEXT("Explorer.exe"));
    SetDword(WINLOGON_KEY, TEXT("SFCQuota"), 77);
    SetString(WINLOGON_KEY, TEXT("UIHost"), std::basic_string<WCHAR>(300, 'x').c_str());
    SetTraceMask(LEVEL_EXCEPTION);
    CWinlogonRegistry registry(LUM_GINA_APP, LUM_GINA_MTM);
    EXPECT_EQ(38u, Log().size());
    EXPECT_EQ(1, Count("[EXCEPTION] Unable to read from registry, Registry Value: GinaDLL, Error: 0x2"));
    EXPECT_EQ("(none)", GetValue(WINLOGON_KEY, TEXT("Userinit")));
    EXPECT_TRUE(registry.m_pUserinit != nullptr);
    EXPECT_TRUE(registry.m_pUIHost == nullptr) << "too long to be read";
    DWORD dwQuota = 0;
    EXPECT_TRUE(registry.m_pSFCQuota->GetRegistryDword(&dwQuota, false));
    EXPECT_EQ(77u, dwQuota);
    // What somebody writes later is found.
    SetString(WINLOGON_KEY, WINLOGON_GINA_DLL, TEXT("wpnGina.dll"));
    EXPECT_EQ("wpnGina.dll", Get(registry));
}

TEST_F(WinlogonRegistry, NamesTheGina)
{
    SetString(WINLOGON_KEY, WINLOGON_GINA_DLL, TEXT("msgina.dll"));
    CWinlogonRegistry registry(LUM_GINA_APP, LUM_GINA_MTM);
    ClearLog();
    EXPECT_EQ("msgina.", Get(registry, 8));
    EXPECT_EQ((std::vector<std::string>{"[WARNING] String length to long"}), Log());
    SetString(WINLOGON_KEY, WINLOGON_GINA_DLL, TEXT("wpnGina.dll"));
    EXPECT_EQ("wpnGina.dll", Get(registry));
    EXPECT_TRUE(registry.SetGinaDLL(TEXT("lum_gina.dll")));
    EXPECT_EQ("\"lum_gina.dll\"", GetValue(WINLOGON_KEY, WINLOGON_GINA_DLL));
    ClearLog();
    EXPECT_TRUE(registry.SetGinaDLL(nullptr));
    EXPECT_EQ((std::vector<std::string>{"[WARNING] Client pushing value that is NULL",
                                        "[EXCEPTION] A bad argument was provided, Argument: szSrc"}),
              Log());
    EXPECT_EQ("lum_gina.dll", Get(registry));
    ClearLog();
    EXPECT_FALSE(registry.GetGinaDLL(nullptr, 260, false));
    EXPECT_EQ((std::vector<std::string>{"[EXCEPTION] A bad argument was provided, Argument: szDest",
                                        "[WARNING] An unhandled exception occurred", FAILED}),
              Log());
}

} // namespace
