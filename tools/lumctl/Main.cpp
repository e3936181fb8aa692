#include <cstdio>

#include "CommandError.h"
#include "CommandLine.h"
#include "CommandLineRunner.h"
#include "machine/SetupError.h"

namespace {

ExitStatus Fail(ExitStatus status, const char* szReason, const char* szHint = "")
{
    std::fprintf(stderr, "lumctl: %s%s\n", szReason, szHint);
    return status;
}

/// What was printed so far comes before why it ended. False when it did not get out.
bool Print(const std::string& output)
{
    return std::fwrite(output.data(), 1, output.size(), stdout) == output.size() && std::fflush(stdout) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::string output;
    bool bIsChange = false;
    try {
        const ExitStatus status = RunCommandLine(argc, argv, output, bIsChange);
        return Print(output) ? status
                             : Fail(bIsChange ? status : STATUS_FAILED,
                                    bIsChange ? "it is done, and what it has to say could not be printed"
                                              : "what it has to say could not be printed");
    } catch (const CUsageError& error) {
        return Fail(STATUS_USAGE, error.what(), " (see lumctl --help)");
    } catch (const CCommandError& error) {
        Print(output);
        return Fail(error.status, error.what());
    } catch (const std::exception& error) {
        Print(output);
        return Fail(STATUS_FAILED, error.what());
    }
}
