#include "Restarts.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

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
            m_path = Format("winlogon-sim-%u-%u.reg", static_cast<unsigned>(GetCurrentThreadId()),
                            static_cast<unsigned>(GetTickCount()));
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

void Show(std::string& output)
{
    std::fputs(output.c_str(), stdout);
    std::fflush(stdout);
    output.clear();
}

DWORD Run(const std::vector<std::string>& arguments)
{
    std::vector<WideText> words;
    std::transform(arguments.begin(), arguments.end(), std::back_inserter(words), ToWide);
    Platform::CChildEnd end;
    const LONG lResult = Platform::RunChild(words, INFINITE, end, Show);
    if (lResult != ERROR_SUCCESS) {
        throw CSetupError(Format("cannot run %s: error %d", arguments[0].c_str(), static_cast<int>(lResult)));
    }
    return end.dwExitStatus;
}

/// A plugin that ends the process chooses the exit status.
bool IsOfPlugin(DWORD dwStatus)
{
    return dwStatus == EXIT_AS_GIVEN || dwStatus > EXIT_LIVED;
}

/// Whether the process of a start ended as it should.
bool IsAsExpected(const std::vector<CStep>& start, DWORD dwStatus)
{
    switch (start.empty() ? CallEnding::ComesBack : start.back().ending) {
    case CallEnding::ComesBack:
        return dwStatus == EXIT_LIVED;
    case CallEnding::EndsProcess:
        return dwStatus == EXIT_ENDED || IsOfPlugin(dwStatus);
    case CallEnding::Hangs:
        return dwStatus == EXIT_ENDED;
    }
    return false;
}

} // namespace

ExitCode LiveStarts(int argc, const char* const* argv, const COptions& options,
                    const std::vector<std::vector<CStep>>& starts)
{
    const CForgottenRegistry registry(options);
    for (std::size_t nStart = 1; nStart <= starts.size(); ++nStart) {
        if (starts.size() != 1) {
            std::printf("%sStart %u of %u\n\n", nStart == 1 ? "" : "\n", static_cast<unsigned>(nStart),
                        static_cast<unsigned>(starts.size()));
        }
        std::vector<std::string> arguments = registry.GetArguments();
        arguments.insert(arguments.begin(), {argv[0], "--start", std::to_string(nStart)});
        arguments.insert(arguments.end(), argv + 1, argv + argc);
        const DWORD dwStatus = Run(arguments);
        if (IsOfPlugin(dwStatus)) {
            std::printf("The process was ended with status %u behind the last step that is shown.\n",
                        static_cast<unsigned>(dwStatus));
        }
        if (!IsAsExpected(starts[nStart - 1], dwStatus)) {
            return IsOfPlugin(dwStatus) ? EXIT_DIFFERENT : static_cast<ExitCode>(dwStatus);
        }
    }
    return EXIT_AS_GIVEN;
}
