#include "machine/ChildProcess.h"

#include <gtest/gtest.h>

// A program that runs another one, which is here the test itself. How others end, the days of administrators
// tell.

namespace {

using Platform::CChildEnd;
using Platform::RunChild;

TEST(ChildProcess, EndsAProgramThatTakesTooLong)
{
    CChildEnd end;
    EXPECT_EQ(RunChild({TEXT("platform_tests"), TEXT("--gtest_also_run_disabled_tests"),
                        TEXT("--gtest_filter=ChildProcess.DISABLED_Sleeps")},
                       100, end),
              ERROR_TIMEOUT);
    EXPECT_NE(end.dwExitStatus, 0u);
}

TEST(ChildProcess, DISABLED_Sleeps)
{
    Sleep(600000);
}

} // namespace
