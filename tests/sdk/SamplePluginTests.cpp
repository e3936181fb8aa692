#include <cstdio>
#include <regex>
#include <sstream>

#include "ForwardedCalls.h"
#include "HostMachine.h"
#include "Thread.h"

namespace {

constexpr WCHAR PLUGINS_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Plugins");
constexpr WCHAR AUDIT_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Plugins\\Audit");
constexpr WCHAR VETO_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Plugins\\Veto");
constexpr char AUDIT_FILE[] = "audit.txt";

/// The lines of the audit file without their time and the blanks behind the result.
Lines Audit()
{
    static const std::regex pattern(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}  (.*?) *\r)");
    Lines lines;
    std::istringstream text(ReadBytes(AUDIT_FILE));
    for (std::string line; std::getline(text, line);) {
        std::smatch match;
        lines.push_back(std::regex_match(line, match, pattern) ? match[1].str() : "malformed: " + line);
    }
    return lines;
}

void WINAPI RemoveAudit(void*, const StandinRecord*)
{
    std::remove(AUDIT_FILE);
}

/// Calls the host from inside a call, and notes the last two lines of the audit file.
struct CNestedCall
{
    static void WINAPI Make(void* pNested, const StandinRecord*)
    {
        auto& self = *static_cast<CNestedCall*>(pNested);
        self.host.LUMWlxIsLockOk(nullptr);
        const Lines lines = Audit();
        self.seen.assign(lines.end() - 2, lines.end());
    }

    CLUMGina& host;
    Lines seen;
};

class SamplePlugins : public CHostMachine
{
protected:
    SamplePlugins()
    {
        DeleteSettings();
        std::remove(AUDIT_FILE);
    }
    ~SamplePlugins() override
    {
        host.reset();
        DeleteSettings();
    }

    void Start(const char* szPlugins)
    {
        SetString(OWN_KEY, TEXT("Plugins"), Widen(szPlugins).c_str());
        CHostMachine::Start();
    }
    void StartAudited(const char* szPlugins)
    {
        SetString(AUDIT_KEY, TEXT("File"), Widen(AUDIT_FILE).c_str());
        Start(szPlugins);
    }

    GinaNode* FirstNode() const { return host->m_pGinaObjectList->m_pHead; }

private:
    static void DeleteSettings()
    {
        for (const WCHAR* szKey : {AUDIT_KEY, VETO_KEY, PLUGINS_KEY}) {
            RegDeleteKeyW(HKEY_LOCAL_MACHINE, szKey);
        }
    }
};

TEST_F(SamplePlugins, PassEveryCallOn)
{
    // One of them may be built by another compiler.
    for (const char* szPlugin : {LUM_PASSING_PLUGINS}) {
        SCOPED_TRACE(szPlugin);
        Start(szPlugin);
        for (const CChainedCall& call : CHAINED_CALLS) {
            SCOPED_TRACE(call.szName);
            msgina->Reset();
            const int nResult = call.pfnCall(*FirstNode()->m_pItem, FirstNode());
            ASSERT_EQ(Lines{std::string("Wlx") + call.szName}, msgina.Calls());
            const StandinRecord through = *msgina->GetRecord(0);
            msgina->Reset();
            EXPECT_EQ(call.pfnCall(*FirstNode()->pNext->m_pItem, FirstNode()->pNext), nResult);
            EXPECT_TRUE(std::equal(through.argument, through.argument + STANDIN_MAX_ARGUMENTS,
                                   msgina->GetRecord(0)->argument));
        }
        CGinaPluginInfo info(LUM_GINA_APP, LUM_GINA_MTM);
        EXPECT_TRUE(FirstNode()->m_pItem->QueryPluginInfo(&info));
        EXPECT_EQ(szPlugin, Narrow(info.m_szGinaDLL));
        EXPECT_EQ(WLX_VERSION_1_4, static_cast<int>(info.m_dwWlxVersion));
        EXPECT_STRNE("", Narrow(info.m_szFriendlyName).c_str());
    }
}

TEST_F(SamplePlugins, PassACallOnToAnObjectWithItsOwnNode)
{
    for (const std::string szPlugin : {LUM_PASSING_PLUGINS, "test_plugin_a.dll"}) {
        SCOPED_TRACE(szPlugin);
        Start((szPlugin + ",test_plugin_b.dll").c_str());
        SetTraceMask(0);
        GinaNode& first = *FirstNode();
        GinaNode* const nodes[] = {first.pNext->pNext, first.pNext};
        CHappening done;
        // As if a plugin was added and removed all the time.
        CThread control([&] {
            for (int n = 0; !done.HasHappened(); ++n) {
                std::atomic_ref(first.pNext).store(nodes[n % 2], std::memory_order_release);
            }
        });
        for (int n = 0; n < 5000; ++n) {
            EXPECT_NO_THROW(CHAINED_CALLS[n % std::size(CHAINED_CALLS)].pfnCall(*first.m_pItem, &first));
        }
        done.Happen();
        control.Join();
        first.pNext = nodes[1];
    }
}

TEST_F(SamplePlugins, VetoRefusesWhatItsSettingsSay)
{
    Start("veto_plugin.dll");
    const auto onSAS = [this](int nAction) {
        msgina->SetResult(StandinCall::WlxLoggedOnSAS, nAction);
        return host->LUMWlxLoggedOnSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr) == nAction ? 'y' : 'n';
    };
    /// What is granted of logging on, locking by either way, logging off by either way, and being logged off.
    const auto granted = [&] {
        const int nLogon = host->LUMWlxLoggedOutSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr, nullptr,
                                                    nullptr, nullptr, nullptr, nullptr);
        return std::string{nLogon == WLX_SAS_ACTION_LOGON ? 'y' : 'n',
                           host->LUMWlxIsLockOk(CONTEXT) ? 'y' : 'n',
                           onSAS(WLX_SAS_ACTION_LOCK_WKSTA),
                           host->LUMWlxIsLogoffOk(CONTEXT) ? 'y' : 'n',
                           onSAS(WLX_SAS_ACTION_LOGOFF),
                           onSAS(WLX_SAS_ACTION_FORCE_LOGOFF)};
    };
    EXPECT_EQ("yyyyyy", granted()) << "no settings, no veto";
    struct
    {
        const WCHAR* szSetting;
        DWORD dwQuery;
        const char* szGranted;
    } const rows[] = {{TEXT("RefuseLogon"), 1, "nyyyyy"},
                      {TEXT("RefuseLock"), 2, "ynnyyy"},
                      {TEXT("RefuseLogoff"), 3, "yyynny"}};
    for (const auto& row : rows) {
        SetDword(VETO_KEY, row.szSetting, 2);
        EXPECT_EQ(row.szGranted, granted());
        for (DWORD dwQuery = 0; dwQuery < 5; ++dwQuery) {
            EXPECT_EQ(dwQuery == row.dwQuery, FirstNode()->m_pItem->QueryPlugin(nullptr, dwQuery, 0, 0));
        }
        // A setting of another type is a mistake, and locks nobody out.
        SetString(VETO_KEY, row.szSetting, TEXT("1"));
        EXPECT_EQ("yyyyyy", granted());
    }
}

TEST_F(SamplePlugins, AuditTellsWhatWasCalledAndWhatCameOfIt)
{
    StartAudited("audit_plugin.dll,pass_plugin.dll");
    msgina->SetResult(StandinCall::WlxLoggedOnSAS, WLX_SAS_ACTION_SHUTDOWN_POWER_OFF);
    host->LUMWlxLoggedOnSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr);
    msgina->SetResult(StandinCall::WlxLoggedOnSAS, 99);
    host->LUMWlxLoggedOnSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr);
    msgina->SetResult(StandinCall::WlxIsLockOk, FALSE);
    host->LUMWlxIsLockOk(CONTEXT);
    msgina->SetFailure(StandinCall::WlxIsLogoffOk, StandinFailure::ReadNull, 0);
    host->LUMWlxIsLogoffOk(CONTEXT);
    host->LUMWlxLogoff(CONTEXT);
    EXPECT_EQ(
        (Lines{"LUMNegotiate -> this plugin: TRUE", "LUMInitialize -> this plugin: TRUE",
               "LUMLoggedOnSAS -> pass_plugin.dll: SHUTDOWN_POWER_OFF",
               "LUMLoggedOnSAS -> pass_plugin.dll: action 99", "LUMIsLockOk -> pass_plugin.dll: FALSE",
               "LUMIsLogoffOk -> pass_plugin.dll: did not return", "LUMLogoff -> pass_plugin.dll: returned"}),
        Audit());
}

TEST_F(SamplePlugins, AuditHasOneLineForEachCallWhileCallsNest)
{
    StartAudited("audit_plugin.dll");
    CNestedCall nested{*host, {}};
    msgina->SetHook(StandinCall::WlxLoggedOnSAS, CNestedCall::Make, &nested);
    host->LUMWlxLoggedOnSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr);
    EXPECT_EQ((Lines{"LUMLoggedOnSAS -> msgina.dll: did not return", "LUMIsLockOk -> msgina.dll: TRUE"}),
              nested.seen);
    // Somebody puts the file away while a call is under way.
    msgina->SetHook(StandinCall::WlxLoggedOnSAS, RemoveAudit, nullptr);
    host->LUMWlxLoggedOnSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr);
    EXPECT_EQ(Lines{"LUMLoggedOnSAS -> msgina.dll: NONE"}, Audit());
}

TEST_F(SamplePlugins, AuditHasNoSecret)
{
    StartAudited("audit_plugin.dll");
    WLX_MPR_NOTIFY_INFO info[2] = {};
    PVOID pProfile = nullptr;
    HANDLE hToken = nullptr;
    DWORD dwOptions = 0;
    LUID id = {};
    EXPECT_EQ(WLX_SAS_ACTION_LOGON, host->LUMWlxLoggedOutSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, &id, nullptr,
                                                             &dwOptions, &hToken, &info[0], &pProfile));
    EXPECT_TRUE(host->LUMWlxNetworkProviderLoad(CONTEXT, &info[1]));
    WCHAR szSecret[] = TEXT("open sesame, standin");
    EXPECT_TRUE(host->LUMWlxStartApplication(CONTEXT, szSecret, szSecret, szSecret));
    EXPECT_TRUE(host->LUMWlxActivateUserShell(CONTEXT, szSecret, szSecret, szSecret));
    EXPECT_TRUE(host->LUMWlxDisplayStatusMessage(CONTEXT, nullptr, 0, szSecret, szSecret));
    const std::string audit = ReadBytes(AUDIT_FILE);
    EXPECT_EQ(7u, Audit().size());
    for (const std::basic_string<WCHAR>& secret :
         {std::basic_string<WCHAR>(STANDIN_PASSWORD), std::basic_string<WCHAR>(STANDIN_USER),
          std::basic_string<WCHAR>(STANDIN_PROFILE)})
    {
        const std::string wide(reinterpret_cast<const char*>(secret.data()), secret.size() * sizeof(WCHAR));
        EXPECT_EQ(std::string::npos, audit.find(Narrow(secret.c_str())));
        EXPECT_EQ(std::string::npos, audit.find(wide));
    }
    for (const WLX_MPR_NOTIFY_INFO& strings : info) {
        LocalFree(strings.pszUserName);
        LocalFree(strings.pszDomain);
        LocalFree(strings.pszPassword);
    }
    LocalFree(static_cast<PWLX_PROFILE_V1_0>(pProfile)->pszProfile);
    LocalFree(pProfile);
}

TEST_F(SamplePlugins, AuditThatCannotBeWrittenStopsNothing)
{
    Start("audit_plugin.dll");
    EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
    SetDword(AUDIT_KEY, TEXT("File"), 0x00610061);
    EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
    for (const std::string& file : {std::string("no_such_folder/audit.txt"), std::string(MAX_PATH, 'x')}) {
        SetString(AUDIT_KEY, TEXT("File"), Widen(file).c_str());
        EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
    }
    EXPECT_EQ("", ReadBytes(AUDIT_FILE));
    // A text without its terminator, as a registry may hold it, is a text.
    SetBytes(AUDIT_KEY, TEXT("File"), REG_SZ, Widen(AUDIT_FILE).c_str(), 9 * sizeof(WCHAR));
    EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
    EXPECT_EQ(Lines{"LUMIsLockOk -> msgina.dll: TRUE"}, Audit());
}

} // namespace
