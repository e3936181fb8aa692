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

TEST_F(PluginsInHost, ThoseThatRefuseInitialisationGoAndOneThatFailsEndsIt)
{
    enum Answer
    {
        ACCEPTS,
        REFUSES,
        FAULTS,
        THROWS,
        ANSWERS
    };
    // Every answer of each of the three.
    for (int nCase = 0; nCase < ANSWERS * ANSWERS * ANSWERS; ++nCase) {
        const int answers[] = {nCase % ANSWERS, nCase / ANSWERS % ANSWERS, nCase / (ANSWERS * ANSWERS)};
        SCOPED_TRACE(testing::Message() << answers[0] << answers[1] << answers[2]);
        Lines chain;
        int nInitialised = 0;
        bool bEnded = false;
        for (int n = 0; n < 3; ++n) {
            plugins[n]->Reset();
            plugins[n]->SetAction(PluginCall::Initialize, PluginAction::Answer, answers[n] != REFUSES);
            plugins[n]->SetFailure(PluginCall::Initialize,
                                   answers[n] == FAULTS   ? StandinFailure::ReadNull
                                   : answers[n] == THROWS ? StandinFailure::Throw
                                                          : StandinFailure::None,
                                   0);
            nInitialised += bEnded ? 0 : 1;
            if (bEnded || answers[n] != REFUSES) {
                chain.push_back(Narrow(plugins[n].GetName()));
            }
            bEnded = bEnded || answers[n] == FAULTS || answers[n] == THROWS;
        }
        chain.push_back("standin_gina.dll");
        Load();
        ClearLog();
        gina->Reset();
        EXPECT_EQ(!bEnded, Initialize() != FALSE);
        EXPECT_EQ(chain, Chain());
        for (int n = 0; n < 3; ++n) {
            EXPECT_EQ(n < nInitialised ? (Lines{"Negotiate", "Initialize"}) : Lines{"Negotiate"},
                      plugins[n].Calls());
        }
        EXPECT_EQ(bEnded ? Lines() : Lines{"WlxInitialize"}, gina.Calls());
        Lines lines(static_cast<std::size_t>(std::count(answers, answers + nInitialised, REFUSES)), FAILED);
        if (bEnded) {
            lines.insert(lines.end(), {"[EXCEPTION] Plugin has generated an unknown exception, Plugin: " +
                                           Narrow(plugins[nInitialised - 1].GetName()),
                                       "[EXCEPTION] An unhandled exception occurred",
                                       "[WARNING] An unhandled exception occurred", FAILED});
        }
        EXPECT_EQ(lines, Log());
        // Those that are left work.
        for (const CPluginDriver& plugin : plugins) {
            plugin->Reset();
        }
        EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
        for (int n = 0; n < 3; ++n) {
            EXPECT_EQ(n < nInitialised && answers[n] == REFUSES ? Lines() : Lines{"IsLockOk"},
                      plugins[n].Calls());
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
