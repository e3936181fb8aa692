// What the simulator tells of plugins, which it knows from the library's trace log alone.

#include <cstdio>
#include <functional>

#include <windows.h>
#include <winwlx.h>

#include "DllDriver.h"
#include "Machine.h"
#include "Runner.h"
#include "TestMachine.h"

namespace {

const std::string TRACE_LOG = GetLogFolder() + "plugins_on_the_way.log";

class PluginsOnTheWay : public CTestMachine
{
protected:
    /// Lives a day with these plugins in front of the stand-in, and gives the report of its last step.
    static CStepReport Live(const char* szPlugins, const std::string& day,
                            const std::string& traceLog = TRACE_LOG)
    {
        SetString(OWN_KEY, TEXT("Plugins"), Widen(szPlugins).c_str());
        // The lines of the service threads could cost one of Winlogon's thread.
        SetDword(OWN_KEY, TEXT("PipeInterval"), 3600);
        SetDword(OWN_KEY, TEXT("MonitorInterval"), 3600);
        COptions options;
        options.standin = "msgina.dll";
        options.traceLog = traceLog;
        const CMachine machine(options);
        CRunner runner("lum_gina.dll", machine.GetStandin(), WLX_VERSION_1_4, traceLog);
        CStepReport report;
        for (const CStep& step : ParseDay("Attach\nWlxNegotiate\n" + day, "day")) {
            report = runner.Run(step);
        }
        return report;
    }

    ~PluginsOnTheWay() override { std::remove(TRACE_LOG.c_str()); }

    CPluginDriver a{TEXT("test_plugin_a.dll")};
    CPluginDriver b{TEXT("test_plugin_b.dll")};
};

TEST_F(PluginsOnTheWay, AreNamedAndExplainWhatTheyChange)
{
    const std::string whole = "test_plugin_a > test_plugin_b > msgina";
    const std::string half = "test_plugin_a > test_plugin_b";
    const auto answer = [this](PluginCall call, LONG nAnswer) {
        return [this, call, nAnswer] { b->SetAction(call, PluginAction::Answer, nAnswer); };
    };
    struct
    {
        std::function<void()> setUp;
        const char* szStep;
        std::string way;
        std::string cameBack;
        Lines differences;
    } const rows[] = {
        {[] {}, "WlxIsLockOk answered by MSGINA.dll", whole, "TRUE", {}},
        {[] {}, "WlxLogoff", whole, "", {}},
        {answer(PluginCall::IsLockOk, FALSE), "WlxIsLockOk", half, "FALSE, by test_plugin_b", {}},
        {answer(PluginCall::IsLockOk, TRUE),
         "WlxIsLockOk answered by test_plugin_b",
         half,
         "TRUE, by test_plugin_b",
         {}},
        {answer(PluginCall::Logoff, 0), "WlxLogoff", half, "ended by test_plugin_b", {}},
        {[this] { a->SetAction(PluginCall::IsLockOk, PluginAction::Change, FALSE); },
         "WlxIsLockOk",
         whole,
         "FALSE, by test_plugin_a",
         {}},
        {answer(PluginCall::IsLockOk, FALSE),
         "WlxIsLockOk answered by test_plugin_a",
         half,
         "FALSE, by test_plugin_b",
         {"the day expects that test_plugin_a answers, test_plugin_b did"}},
        {[] {},
         "WlxIsLockOk gina fails READ_NULL answered by msgina",
         whole,
         "FALSE",
         {"the day expects that msgina answers, nobody did"}},
        {[this] { b->SetFailure(PluginCall::LoggedOnSAS, StandinFailure::ReadNull, 0); },
         "WlxLoggedOnSAS gina returns LOGOFF",
         half,
         "NONE",
         {"test_plugin_b failed inside the call"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szStep);
        a->Reset();
        b->Reset();
        row.setUp();
        const CStepReport report = Live("test_plugin_a.dll,test_plugin_b.dll", row.szStep);
        EXPECT_EQ(row.way, report.way);
        EXPECT_EQ(row.cameBack, report.cameBack);
        EXPECT_EQ(row.differences, report.differences);
    }
}

TEST_F(PluginsOnTheWay, ThoseThatLeaveTheChainAreTold)
{
    const char* szPlugins = "nowhere.dll,,test_plugin_a.dll,test_plugin_b.dll";
    CStepReport report = Live(szPlugins, "");
    EXPECT_EQ("test_plugin_a, test_plugin_b, msgina", report.way);
    EXPECT_EQ(Lines{"nowhere.dll cannot be used and is left out; the trace log says why"},
              report.differences);
    a->SetAction(PluginCall::Initialize, PluginAction::Answer, FALSE);
    report = Live(szPlugins, "WlxInitialize");
    EXPECT_EQ(Lines{"test_plugin_a.dll refuses to be initialised and leaves the chain"}, report.differences);
    report = Live(szPlugins, "WlxInitialize\nWlxIsLockOk");
    EXPECT_EQ("test_plugin_b > msgina", report.way);
    a->SetFailure(PluginCall::Initialize, StandinFailure::ReadNull, 0);
    report = Live(szPlugins, "WlxInitialize");
    EXPECT_EQ("FALSE", report.cameBack);
    EXPECT_EQ(Lines{"test_plugin_a failed inside the call"}, report.differences);
}

TEST_F(PluginsOnTheWay, AreUnknownWithoutATraceLog)
{
    b->SetAction(PluginCall::IsLockOk, PluginAction::Answer, FALSE);
    const CStepReport report =
        Live("test_plugin_b.dll", "WlxIsLockOk expect FALSE answered by test_plugin_b", "");
    EXPECT_EQ("", report.way);
    EXPECT_EQ((Lines{"the day expects that test_plugin_b answers, and without a full trace log nobody knows "
                     "who did",
                     "the call did not reach the stand-in GINA msgina.dll"}),
              report.differences);
}

} // namespace
