#include "Runner.h"

#include <gtest/gtest.h>
#include <winwlx.h>

#include "UnfinishedDay.h"
#include "machine/SetupError.h"

namespace {

struct CRow
{
    const char* szDay;
    /// The differences of the last step.
    std::vector<std::string> differences;
    /// What the last step showed as come back; not looked at when null.
    const char* szCameBack = nullptr;
};

/// Lives a day with a stand-in GINA that Winlogon itself loads, and gives the report of the last step.
CStepReport Live(const std::string& day, const std::string& gina = "msgina.dll")
{
    CRunner runner(gina, gina, WLX_VERSION_1_4);
    CStepReport report;
    for (const CStep& step : ParseDay("Attach\n" + day, "day")) {
        report = runner.Run(step);
    }
    return report;
}

TEST(Runner, TellsWhatIsWrongWithAStep)
{
    const std::string skipped = "Winlogon cannot make this call: ";
    const CRow rows[] = {
        {"WlxNegotiate\nWlxIsLockOk gina returns 7 expect TRUE", {}, "7"},
        {"WlxNegotiate\nWlxIsLockOk gina returns FALSE", {}, "FALSE"},
        {"WlxNegotiate\nWlxIsLockOk expect FALSE", {"the day expects FALSE, TRUE came back"}},
        {"WlxNegotiate\nWlxWkstaLockedSAS gina returns 99 expect 98", {"the day expects 98, 99 came back"}},
        {"WlxNegotiate\nWlxIsLockOk gina fails READ_NULL",
         {"exception 0xc0000005 reached Winlogon"},
         "FALSE"},
        {"WlxNegotiate\nWlxIsLockOk gina fails THROW\nWlxIsLockOk", {}, "TRUE"},
        {"WlxIsLockOk", {skipped + "no version was agreed"}, "skipped: no version was agreed"},
        {"WlxIsLockOk expect SKIPPED", {}},
        {"WlxNegotiate\nWlxIsLockOk expect SKIPPED",
         {"the day expects that Winlogon does not make this call"}},
        {"WlxNegotiate gina returns FALSE\nWlxLogoff", {skipped + "no version was agreed"}},
        {"WlxNegotiate gina negotiates 1.3\nWlxReconnectNotify", {skipped + "not in version 1.3"}},
        {"WlxNegotiate gina negotiates 1.3\nWlxRemoveStatusMessage", {}, "TRUE"},
        {"WlxNegotiate\nWait 0\nWlxIsLockOk", {}, "TRUE"},
        {"WlxNegotiate\nWait 1", {}, "1 s later"},
        {"WlxNegotiate\nDetach\nAttach\nWlxLogoff", {skipped + "no version was agreed"}},
        {"Admin lumctl nonsense expect 2", {}, "exit status 2"},
        {"Admin lumctl nonsense", {"the day expects exit status 0"}, "exit status 2"},
        {"SetValue key=SOFTWARE\\ORX\\Test name=Sim text=\"a b\"\n"
         "AwaitValue key=SOFTWARE\\ORX\\Test name=Sim text=\"a b\"",
         {},
         "Sim = \"a b\""},
        {"SetValue key=SOFTWARE\\ORX\\Test name=Sim text=NULL\n"
         "AwaitValue key=SOFTWARE\\ORX\\Test name=Sim text=NULL",
         {},
         "Sim = no value"},
    };
    for (const CRow& row : rows) {
        const CStepReport report = Live(row.szDay);
        EXPECT_EQ(report.differences, row.differences) << row.szDay;
        if (row.szCameBack != nullptr) {
            EXPECT_EQ(report.cameBack, row.szCameBack) << row.szDay;
        }
    }
}

TEST(Runner, HandsTheContextOfInitializeToLaterCalls)
{
    const CStepReport report = Live("WlxNegotiate\nWlxInitialize\nWlxWkstaLockedSAS sas=TIMEOUT");
    EXPECT_EQ(report.reached, "context, sas TIMEOUT");
    EXPECT_TRUE(report.differences.empty());
}

TEST(Runner, KnowsTheExportsThatAGinaLacks)
{
    const std::string gina = "standin_gina_no_optional.dll";
    EXPECT_EQ(Live("WlxNegotiate\nWlxReconnectNotify", gina).cameBack,
              "skipped: " + gina + " does not export it");
    EXPECT_THROW(Live("WlxNegotiate", "no_such_gina.dll"), CSetupError);
    EXPECT_THROW(Live("Admin no_such_program"), CSetupError);
}

TEST(UnfinishedDay, IsAFailureWhenAPluginOrGinaEndsTheProcess)
{
    const auto live = [] {
        CRunner runner("msgina.dll", "msgina.dll", WLX_VERSION_1_4);
        CUnfinishedDay day(runner.GetStandin());
        for (const CStep& step : ParseDay("Attach\nWlxNegotiate\nWlxIsLockOk gina fails EXIT_PROCESS", "day"))
        {
            day.BeginStep(step);
            runner.Run(step);
        }
    };
    EXPECT_EXIT(live(), testing::ExitedWithCode(1),
                "the process was ended in line 3, before the day was over");
}

} // namespace
