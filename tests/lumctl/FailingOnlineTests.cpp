#include "ControlProtocol.h"
#include "LumctlRun.h"
#include "OnlineMachine.h"
#include "platform/FaultInjection.h"

namespace {

class FailingOnline : public COnlineMachine
{
};

TEST_F(FailingOnline, IsNotTakenForTheAbsenceOfAHost)
{
    const struct
    {
        DWORD dwError;
        const char* szReason;
    } rows[] = {
        {ERROR_ACCESS_DENIED, "only administrators may talk to the host"},
        {0x4711, "the pipe of the host failed with error 18193"},
    };
    for (const auto& row : rows) {
        for (const char* szCommandLine : {"ping", "status", "plugins list", "plugins up x.dll"}) {
            const CFaultInjection fault(PlatformCall::CreateFileW, 1, row.dwError,
                                        ControlProtocol::PIPE_NAME);
            const CLumctlRun run = RunLumctl(SplitWords(szCommandLine));
            EXPECT_EQ(run.status, STATUS_FAILED) << szCommandLine;
            EXPECT_EQ(run.output, "") << szCommandLine;
            EXPECT_EQ(run.error, row.szReason) << szCommandLine;
        }
    }
    // The host may have got this one.
    const CFaultInjection fault(PlatformCall::PeekNamedPipe, 1, ERROR_ACCESS_DENIED);
    const CLumctlRun run = RunLumctl(SplitWords("plugins up x.dll"));
    EXPECT_EQ(run.status, STATUS_UNCERTAIN) << run.error;
}

} // namespace
