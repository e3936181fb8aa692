#include "PluginsInHost.h"

namespace {

void WINAPI AskForLogoff(void* pHost, const PluginRecord* pRecord)
{
    EXPECT_TRUE(
        static_cast<CLUMGina*>(pHost)->LUMWlxIsLogoffOk(reinterpret_cast<PVOID>(pRecord->argument[1])));
}

TEST_F(PluginsInHost, OneThatCannotBeUsedIsLeftOut)
{
    struct
    {
        const char* szSecond;
        const char* szReason;
    } const rows[] = {
        {"nowhere.dll", "Unable to load DLL, Filename: nowhere.dll, Error: 0x7e"},
        {"test_plugin_no_unload.dll",
         "Unable to load function from DLL, Function: LUMDynamicUnload, Error: 0x7f"},
        {"test_plugin_b.dll", "Negotiation failed while loading gina dll, Error: 0x0"},
    };
    plugins[1]->SetAction(PluginCall::Negotiate, PluginAction::Answer, FALSE);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szSecond);
        SetString(OWN_KEY, TEXT("Plugins"),
                  Widen(std::string("test_plugin_a.dll,") + row.szSecond + ",test_plugin_c.dll").c_str());
        Load();
        EXPECT_EQ((Lines{"test_plugin_a.dll", "test_plugin_c.dll", "standin_gina.dll"}), Chain());
        EXPECT_EQ(1, Count(std::string("[EXCEPTION] ") + row.szReason));
        EXPECT_EQ(1, Count(std::string("[WARNING] Unable to create gina plugin, Plugin: ") + row.szSecond));
    }
}

TEST_F(PluginsInHost, AreInitialisedInOrderAndCalledInOrder)
{
    SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 4);
    Load();
    ASSERT_TRUE(Initialize());
    for (int n = 0; n < 3; ++n) {
        const PluginRecord& record = plugins[n].LastRecord();
        EXPECT_EQ(PluginCall::Initialize, record.call);
        EXPECT_EQ(4 + n, record.nOrder) << "behind three negotiations";
        EXPECT_EQ(5u, record.argument[1]) << "instance count";
        EXPECT_EQ(0u, record.argument[7] | record.argument[8]) << "load flags";
    }
    plugins[1]->SetAction(PluginCall::LoggedOnSAS, PluginAction::Answer, WLX_SAS_ACTION_LOGOFF);
    gina->Reset();
    EXPECT_EQ(WLX_SAS_ACTION_LOGOFF, host->LUMWlxLoggedOnSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr));
    EXPECT_EQ(7, plugins[0].LastRecord().nOrder);
    EXPECT_EQ(8, plugins[1].LastRecord().nOrder);
    EXPECT_EQ(8, m_nCounter) << "what a plugin answers itself goes no further";
    EXPECT_EQ(Lines(), gina.Calls());
}

TEST_F(PluginsInHost, ThoseThatRefuseInitialisationGo)
{
    // Every subset of the three refuses.
    for (unsigned uRefusing = 0; uRefusing < 8; ++uRefusing) {
        SCOPED_TRACE(uRefusing);
        Lines expected;
        for (unsigned n = 0; n < 3; ++n) {
            const bool bRefuses = (uRefusing & 1 << n) != 0;
            plugins[n]->Reset();
            plugins[n]->SetAction(PluginCall::Initialize, PluginAction::Answer, bRefuses ? FALSE : TRUE);
            if (!bRefuses) {
                expected.push_back(Narrow(plugins[n].GetName()));
            }
        }
        expected.push_back("standin_gina.dll");
        Load();
        ClearLog();
        gina->Reset();
        EXPECT_TRUE(Initialize());
        EXPECT_EQ(expected, Chain());
        EXPECT_EQ(static_cast<int>(4 - expected.size()), Count(FAILED));
        EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
        for (unsigned n = 0; n < 3; ++n) {
            const bool bRefuses = (uRefusing & 1 << n) != 0;
            EXPECT_EQ(bRefuses ? (Lines{"Negotiate", "Initialize"})
                               : (Lines{"Negotiate", "Initialize", "IsLockOk"}),
                      plugins[n].Calls());
        }
        EXPECT_EQ((Lines{"WlxInitialize", "WlxIsLockOk"}), gina.Calls());
    }
}

TEST_F(PluginsInHost, OneThatFailsInitialisationEndsIt)
{
    for (const StandinFailure failure : {StandinFailure::ReadNull, StandinFailure::Throw}) {
        for (int nFailing = 0; nFailing < 3; ++nFailing) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(failure) << " in " << nFailing);
            for (const CPluginDriver& plugin : plugins) {
                plugin->Reset();
            }
            plugins[nFailing]->SetFailure(PluginCall::Initialize, failure, 0);
            Load();
            ClearLog();
            gina->Reset();
            EXPECT_FALSE(Initialize());
            EXPECT_EQ((Lines{"[EXCEPTION] Plugin has generated an unknown exception, Plugin: " +
                                 Narrow(plugins[nFailing].GetName()),
                             "[EXCEPTION] An unhandled exception occurred",
                             "[WARNING] An unhandled exception occurred", FAILED}),
                      Log());
            for (int n = 0; n < 3; ++n) {
                EXPECT_EQ(n <= nFailing ? (Lines{"Negotiate", "Initialize"}) : Lines{"Negotiate"},
                          plugins[n].Calls());
            }
            EXPECT_EQ(4u, host->m_pGinaObjectList->m_dwCount);
            EXPECT_EQ(Lines(), gina.Calls());
        }
    }
}

TEST_F(PluginsInHost, AFailingPluginCostsTheCallItsDefaultResultAndNoMore)
{
    Load();
    ASSERT_TRUE(Initialize());
    plugins[2]->SetFailure(PluginCall::LoggedOnSAS, StandinFailure::ReadNull, 0);
    ClearLog();
    EXPECT_EQ(WLX_SAS_ACTION_NONE, host->LUMWlxLoggedOnSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr));
    // The fault is the third's; the first two saw an exception pass.
    const std::string unknown = "[EXCEPTION] Plugin has generated an unknown exception, Plugin: ";
    EXPECT_EQ((Lines{unknown + "test_plugin_c.dll", unknown + "test_plugin_b.dll",
                     unknown + "test_plugin_a.dll", FAILED}),
              Log());
    EXPECT_EQ(4u, host->m_pGinaObjectList->m_dwCount);
    plugins[2]->SetFailure(PluginCall::LoggedOnSAS, StandinFailure::None, 0);
    gina->SetResult(StandinCall::WlxLoggedOnSAS, WLX_SAS_ACTION_LOCK_WKSTA);
    EXPECT_EQ(WLX_SAS_ACTION_LOCK_WKSTA,
              host->LUMWlxLoggedOnSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr));
}

TEST_F(PluginsInHost, CallsNestThroughTheWholeChain)
{
    Load();
    ASSERT_TRUE(Initialize());
    plugins[1]->SetHook(PluginCall::LoggedOnSAS, AskForLogoff, host.get());
    gina->Reset();
    gina->SetResult(StandinCall::WlxLoggedOnSAS, WLX_SAS_ACTION_LOGOFF);
    EXPECT_EQ(WLX_SAS_ACTION_LOGOFF, host->LUMWlxLoggedOnSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr));
    EXPECT_EQ((Lines{"WlxIsLogoffOk", "WlxLoggedOnSAS"}), gina.Calls());
}

} // namespace
