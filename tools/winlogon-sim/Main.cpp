#include <cstdio>
#include <cstdlib>

#include "Machine.h"
#include "Report.h"
#include "Restarts.h"
#include "machine/SetupError.h"
#include "StepList.h"
#include "UnfinishedDay.h"

namespace {

enum ExitCode
{
    EXIT_AS_GIVEN = 0,
    EXIT_DIFFERENT = 1,
    EXIT_USAGE = 2,
    EXIT_SETUP = 3,
};

/// A day may start programs, in whatever way. None of them may live a day, which could be the same one.
void RefuseDayWithinDay()
{
    static char mark[] = "LUM_WINLOGON_SIM=1";
    if (std::getenv("LUM_WINLOGON_SIM") != nullptr) {
        throw CSetupError("a day starts no other day, which may be itself");
    }
    putenv(mark);
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
    return report.HasDifferences() ? EXIT_DIFFERENT : EXIT_AS_GIVEN;
}

ExitCode LiveDay(const COptions& options, int argc, const char* const* argv)
{
    // Each start of a day is a process of its own.
    if (options.dwStart == 0) {
        RefuseDayWithinDay();
    }
    const std::vector<CStep> steps = ReadDayFile(options.day);
    if (options.dwStart != 0) {
        const std::vector<std::vector<CStep>> starts = SplitStarts(steps);
        return options.dwStart <= starts.size()
                   ? LiveSteps(options, starts[options.dwStart - 1])
                   : throw CUsageError("the day has fewer starts than --start says");
    }
    if (!options.bOnThisMachine) {
        CMachine::RequireUnused();
    }
    return NeedsProcesses(steps) ? static_cast<ExitCode>(LiveStarts(argc, argv, options, steps))
                                 : LiveSteps(options, steps);
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
