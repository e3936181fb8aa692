#include "Restarts.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "UnfinishedDay.h"
#include "machine/ChildProcess.h"
#include "machine/MachineRegistry.h"
#include "machine/SetupError.h"

namespace {

/// Keeps the registry of a machine that is forgotten afterwards, from one start to the next. Windows keeps
/// its own.
class CForgottenRegistry
{
public:
    explicit CForgottenRegistry(const COptions& options)
    {
        if (options.registry.empty() && MachineRegistry::ForgetVolatile() == ERROR_SUCCESS) {
            m_path = (options.traceLog.empty() ? "winlogon-sim" : options.traceLog) + ".reg";
            std::remove(m_path.c_str());
        }
    }
    ~CForgottenRegistry()
    {
        if (!m_path.empty()) {
            std::remove(m_path.c_str());
        }
    }
    CForgottenRegistry(const CForgottenRegistry&) = delete;
    CForgottenRegistry& operator=(const CForgottenRegistry&) = delete;

    std::vector<std::string> GetArguments() const
    {
        return m_path.empty() ? std::vector<std::string>() : std::vector<std::string>{"--registry", m_path};
    }

private:
    std::string m_path;
};

DWORD Run(const std::vector<std::string>& arguments)
{
    std::vector<WideText> words;
    std::transform(arguments.begin(), arguments.end(), std::back_inserter(words), ToWide);
    Platform::CChildEnd end;
    const LONG lResult = Platform::RunChild(words, INFINITE, end);
    if (lResult != ERROR_SUCCESS) {
        throw CSetupError(Format("cannot run %s: error %d", arguments[0].c_str(), static_cast<int>(lResult)));
    }
    std::fputs(end.output.c_str(), stdout);
    return end.dwExitStatus;
}

/// Whether the process of a start ended as it should.
bool IsAsExpected(const std::vector<CStep>& start, DWORD dwStatus)
{
    const bool bComesBack = start.empty() || start.back().ending == CallEnding::ComesBack;
    return dwStatus == (bComesBack ? 0 : EXIT_ENDED);
}

} // namespace

bool NeedsProcesses(const std::vector<CStep>& steps)
{
    return std::any_of(steps.begin(), steps.end(), [](const CStep& step) {
        return step.kind == StepKind::Restart || step.ending != CallEnding::ComesBack;
    });
}

DWORD LiveStarts(int argc, const char* const* argv, const COptions& options, const std::vector<CStep>& steps)
{
    const CForgottenRegistry registry(options);
    const std::vector<std::vector<CStep>> starts = SplitStarts(steps);
    for (std::size_t nStart = 1; nStart <= starts.size(); ++nStart) {
        std::printf("%sStart %u of %u\n\n", nStart == 1 ? "" : "\n", static_cast<unsigned>(nStart),
                    static_cast<unsigned>(starts.size()));
        std::vector<std::string> arguments = registry.GetArguments();
        arguments.insert(arguments.begin(), {argv[0], "--start", std::to_string(nStart)});
        arguments.insert(arguments.end(), argv + 1, argv + argc);
        const DWORD dwStatus = Run(arguments);
        std::fflush(stdout);
        if (!IsAsExpected(starts[nStart - 1], dwStatus)) {
            std::printf("\nStart %u ended with status %u.\n", static_cast<unsigned>(nStart),
                        static_cast<unsigned>(dwStatus));
            return dwStatus != 0 ? dwStatus : EXIT_FAILURE;
        }
    }
    return 0;
}
