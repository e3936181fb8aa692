#include <cstdio>
#include <cstdlib>

#include "ExitCode.h"
#include "Machine.h"
#include "Report.h"
#include "Restarts.h"
#include "machine/SetupError.h"
#include "StepList.h"
#include "UnfinishedDay.h"

namespace {

/// A day may start programs, in whatever way. None of them may live a day, which could be the same one: only
/// the process that reads a day starts others, and those start none.
void RefuseDayWithinDay(const COptions& options)
{
    static char markOfDay[] = "LUM_WINLOGON_SIM=day";
    static char markOfStart[] = "LUM_WINLOGON_SIM=start";
    const char* szMark = std::getenv("LUM_WINLOGON_SIM");
    const std::string expected = options.dwStart != 0 ? "day" : "";
    if (szMark != nullptr && szMark != expected) {
        throw CSetupError("a day starts no other day, which may be itself");
    }
    putenv(options.dwStart != 0 ? markOfStart : markOfDay);
}

ExitCode LiveSteps(const COptions& options, const std::vector<CStep>& steps)
{
    const CMachine machine(options);
    CReport report;
    report.PrintHeading(options.day, options.gina);
    std::size_t nCalled = 0;
    {
        CRunner runner(options.gina, machine.GetStandin(), options.dwVersion, options.traceLog);
        CUnfinishedDay day(runner.GetStandin());
        for (const CStep& step : steps) {
            day.BeginStep(step);
            report.PrintStep(runner.Run(step));
        }
        nCalled = runner.GetCalledCount();
    }
    report.PrintTotals(nCalled, options.traceLog);
    machine.Save();
    return report.HasDifferences() ? EXIT_DIFFERENT : EXIT_LIVED;
}

/// Each start of the machine is a process of its own, so that a plugin which ends it does not end the day.
ExitCode LiveDay(const COptions& options, int argc, const char* const* argv)
{
    RefuseDayWithinDay(options);
    const std::vector<std::vector<CStep>> starts = SplitStarts(ReadDayFile(options.day));
    if (options.dwStart > starts.size()) {
        throw CUsageError("the day has fewer starts than --start says");
    }
    if (options.dwStart != 0) {
        return LiveSteps(options, starts[options.dwStart - 1]);
    }
    if (!options.bOnThisMachine) {
        CMachine::RequireUnused();
    }
    return LiveStarts(argc, argv, options, starts);
}

ExitCode Run(int argc, const char* const* argv)
{
    const COptions options = ParseOptions(argc, argv);
    if (options.bHelp) {
        std::fputs(USAGE, stdout);
        return EXIT_AS_GIVEN;
    }
    if (options.bSteps) {
        PrintSteps();
        return EXIT_AS_GIVEN;
    }
    return LiveDay(options, argc, argv);
}

ExitCode Fail(ExitCode code, const char* szReason, const char* szHint)
{
    std::fflush(stdout);
    std::fprintf(stderr, "winlogon-sim: %s%s\n", szReason, szHint);
    return code;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return Run(argc, argv);
    } catch (const CUsageError& error) {
        return Fail(EXIT_USAGE, error.what(), " (see winlogon-sim --help)");
    } catch (const CDayFileError& error) {
        return Fail(EXIT_USAGE, error.what(), "");
    } catch (const std::exception& error) {
        return Fail(EXIT_SETUP, error.what(), "");
    }
}
