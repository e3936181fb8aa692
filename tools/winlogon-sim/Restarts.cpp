#include "Restarts.h"

#include <algorithm>
#include <cstdio>

#include "UnfinishedDay.h"
#include "machine/ChildProcess.h"
#include "machine/SetupError.h"

namespace {

DWORD LiveStart(int argc, const char* const* argv, std::size_t nStart)
{
    std::vector<WideText> words;
    std::transform(argv, argv + argc, std::back_inserter(words), ToWide);
    words.insert(words.end(), {TEXT("--start"), ToWide(std::to_string(nStart))});
    Platform::CChildEnd end;
    const LONG lResult = Platform::RunChild(words, INFINITE, end);
    if (lResult != ERROR_SUCCESS) {
        throw CSetupError(Format("cannot run %s: error %d", argv[0], static_cast<int>(lResult)));
    }
    std::fputs(end.output.c_str(), stdout);
    std::fflush(stdout);
    return end.dwExitStatus;
}

} // namespace

bool NeedsProcesses(const std::vector<CStep>& steps)
{
    return std::any_of(steps.begin(), steps.end(), [](const CStep& step) {
        return step.kind == StepKind::Restart || step.ending != CallEnding::ComesBack;
    });
}

DWORD LiveStarts(int argc, const char* const* argv, const std::vector<CStep>& steps)
{
    const std::vector<std::vector<CStep>> starts = SplitStarts(steps);
    for (std::size_t nStart = 1; nStart <= starts.size(); ++nStart) {
        std::printf("%sStart %u of %u\n\n", nStart == 1 ? "" : "\n", static_cast<unsigned>(nStart),
                    static_cast<unsigned>(starts.size()));
        std::fflush(stdout);
        const std::vector<CStep>& start = starts[nStart - 1];
        const bool bComesBack = start.empty() || start.back().ending == CallEnding::ComesBack;
        const DWORD dwStatus = LiveStart(argc, argv, nStart);
        if (dwStatus != (bComesBack ? 0 : EXIT_ENDED)) {
            std::printf("\nStart %u ended with status %u.\n", static_cast<unsigned>(nStart),
                        static_cast<unsigned>(dwStatus));
            return dwStatus;
        }
    }
    return 0;
}
