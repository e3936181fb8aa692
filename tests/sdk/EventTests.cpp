#include "DllStamp.h"
#include "EventFile.h"
#include "PluginsInHost.h"
#include "SafeStartNames.h"

namespace {

/// The host remembers for a minute what it has reported: a cause occurs in one of these tests only.
class Events : public PluginsInHost
{
protected:
    Events()
    {
        ForgetEvents();
        SetDword(OWN_KEY, TEXT("EventLog"), 1);
    }

    BOOL Ask(PluginCall call) const
    {
        switch (call) {
        case PluginCall::IsLockOk:
            return host->LUMWlxIsLockOk(CONTEXT);
        case PluginCall::IsLogoffOk:
            return host->LUMWlxIsLogoffOk(CONTEXT);
        case PluginCall::ActivateUserShell:
            return host->LUMWlxActivateUserShell(CONTEXT, nullptr, nullptr, nullptr);
        case PluginCall::StartApplication:
            return host->LUMWlxStartApplication(CONTEXT, nullptr, nullptr, nullptr);
        default:
            return host->LUMWlxNetworkProviderLoad(CONTEXT, nullptr);
        }
    }
};

TEST_F(Events, TellWhoIsInServiceWhoIsNotAndWhoFaults)
{
    SetString(OWN_KEY, TEXT("Plugins"),
              TEXT("test_plugin_a.dll,nowhere.dll,test_plugin_b.dll,test_plugin_c.dll"));
    plugins[1]->SetFailure(PluginCall::Negotiate, StandinFailure::ReadNull, 0);
    plugins[2]->SetAction(PluginCall::Initialize, PluginAction::Answer, FALSE);
    Load();
    ASSERT_TRUE(Initialize());
    plugins[0]->SetFailure(PluginCall::LoggedOnSAS, StandinFailure::Throw, 0);
    gina->SetFailure(StandinCall::WlxIsLogoffOk, StandinFailure::ReadNull, 0);
    for (int n = 0; n < 2; ++n) {
        EXPECT_FALSE(host->LUMWlxIsLogoffOk(CONTEXT));
        host->LUMWlxLoggedOnSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr);
    }
    EXPECT_EQ((Lines{"2 2 LUM GINA: nowhere.dll | Unable to load DLL, Filename: nowhere.dll, Error: 0x7e",
                     "1 3 LUM GINA: test_plugin_b.dll | LUMNegotiate | 0xc0000005",
                     "2 2 LUM GINA: test_plugin_b.dll | Plugin has generated an unknown exception, Plugin: "
                     "test_plugin_b.dll",
                     "2 2 LUM GINA: test_plugin_c.dll | it refused its initialisation", "4 1 LUM GINA: 1",
                     "1 3 LUM GINA: standin_gina.dll | WlxIsLogoffOk | 0xc0000005",
                     "1 3 LUM GINA: test_plugin_a.dll | LUMLoggedOnSAS | 0xe06d7363"}),
              CollectEvents());
}

TEST_F(Events, TellWhoIsLeftOutAtASafeStart)
{
    SetDword(OWN_KEY, SAFE_START, 1);
    SetString(START_KEY, IN_PLUGIN, TEXT("test_plugin_b.dll"));
    SetString(START_KEY, IN_PLUGIN_STAMP, GetDllStamp(TEXT("test_plugin_b.dll")).c_str());
    Load();
    EXPECT_EQ(Lines{"2 6 LUM GINA: test_plugin_b.dll"}, CollectEvents());
}

TEST_F(Events, TellWhichPluginSaidNo)
{
    Load();
    ASSERT_TRUE(Initialize());
    CollectEvents();
    const struct
    {
        PluginCall call;
        StandinCall ofGina;
        const char* szName;
    } rows[] = {
        {PluginCall::IsLockOk, StandinCall::WlxIsLockOk, "IsLockOk"},
        {PluginCall::IsLogoffOk, StandinCall::WlxIsLogoffOk, "IsLogoffOk"},
        {PluginCall::ActivateUserShell, StandinCall::WlxActivateUserShell, "ActivateUserShell"},
        {PluginCall::StartApplication, StandinCall::WlxStartApplication, "StartApplication"},
        {PluginCall::NetworkProviderLoad, StandinCall::WlxNetworkProviderLoad, "NetworkProviderLoad"}};
    for (const auto& row : rows) {
        for (const PluginAction action : {PluginAction::Answer, PluginAction::Change}) {
            const bool bPassed = action == PluginAction::Change;
            // The GINA refuses: nobody else said no, also who would have. Twice, since only the first of a
            // cause is reported.
            gina->SetResult(row.ofGina, FALSE);
            plugins[1]->SetAction(row.call, PluginAction::Change, FALSE);
            EXPECT_FALSE(Ask(row.call));
            EXPECT_EQ(Lines(), CollectEvents()) << row.szName;
            gina->SetResult(row.ofGina, TRUE);
            plugins[1]->SetAction(row.call, PluginAction::PassOn, TRUE);
            EXPECT_TRUE(Ask(row.call));
            CPluginDriver& plugin = plugins[bPassed ? 1 : 2];
            plugin->SetAction(row.call, action, FALSE);
            EXPECT_FALSE(Ask(row.call));
            EXPECT_FALSE(Ask(row.call));
            EXPECT_EQ((Lines{"2 4 LUM GINA: " + Narrow(plugin.GetName()) + " | " + row.szName}),
                      CollectEvents());
            plugin->SetAction(row.call, PluginAction::PassOn, TRUE);
        }
        // A plugin in front that grants what was refused behind it.
        plugins[0]->SetAction(row.call, PluginAction::Change, TRUE);
        gina->SetResult(row.ofGina, FALSE);
        EXPECT_TRUE(Ask(row.call));
        gina->SetResult(row.ofGina, TRUE);
    }
    EXPECT_EQ(Lines(), CollectEvents());
}

TEST_F(Events, LeaveNoOtherMarkAndNoneAtAllWithoutTheValue)
{
    SetString(OWN_KEY, TEXT("Plugins"), TEXT("absent.dll,test_plugin_a.dll"));
    Lines logs[2];
    // The first round makes the values that are missing. Not the first instance: no thread writes in between.
    for (const DWORD dwOn : {0u, 1u, 0u}) {
        SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 4);
        SetTraceMask(0xFFF);
        SetDword(OWN_KEY, TEXT("EventLog"), dwOn);
        plugins[0]->Reset();
        Load();
        EXPECT_TRUE(Initialize());
        plugins[0]->SetAction(PluginCall::IsLockOk, PluginAction::Answer, FALSE);
        plugins[0]->SetFailure(PluginCall::Logoff, StandinFailure::ReadNull, 0);
        EXPECT_FALSE(host->LUMWlxIsLockOk(CONTEXT));
        host->LUMWlxLogoff(CONTEXT);
        host->LUMWlxShutdown(CONTEXT, 0);
        logs[dwOn] = Log();
        SetDword(OWN_KEY, TEXT("EventLog"), 1);
        EXPECT_EQ(dwOn == 0, CollectEvents().empty());
    }
    EXPECT_LT(100u, logs[0].size());
    EXPECT_TRUE(logs[1] == logs[0]);
}

} // namespace
