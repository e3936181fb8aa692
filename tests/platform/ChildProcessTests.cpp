#include "machine/ChildProcess.h"

#include <gtest/gtest.h>

// A program that runs another one, which is here the test itself.

namespace {

using Platform::CChildEnd;
using Platform::RunChild;

TEST(ChildProcess, TellsHowAProgramEndedAndWhatItWrote)
{
    CChildEnd end;
    EXPECT_EQ(RunChild({TEXT("platform_tests"), TEXT("--gtest_list_tests")}, INFINITE, end), ERROR_SUCCESS);
    EXPECT_EQ(end.dwExitStatus, 0u);
    EXPECT_NE(end.output.find("\nChildProcess.\n  TellsHowAProgram"), std::string::npos) << end.output;

    CChildEnd failed;
    EXPECT_EQ(RunChild({TEXT("platform_tests"), TEXT("--gtest_also_run_disabled_tests"),
                        TEXT("--gtest_filter=ChildProcess.DISABLED_Fails")},
                       INFINITE, failed),
              ERROR_SUCCESS);
    EXPECT_EQ(failed.dwExitStatus, 1u);
    EXPECT_EQ(RunChild({TEXT("no such program")}, INFINITE, end), ERROR_FILE_NOT_FOUND);
}

TEST(ChildProcess, EndsAProgramThatTakesTooLong)
{
    CChildEnd end;
    EXPECT_EQ(RunChild({TEXT("platform_tests"), TEXT("--gtest_also_run_disabled_tests"),
                        TEXT("--gtest_filter=ChildProcess.DISABLED_Sleeps")},
                       100, end),
              ERROR_TIMEOUT);
    EXPECT_NE(end.dwExitStatus, 0u);
}

TEST(ChildProcess, DISABLED_Fails)
{
    FAIL();
}

TEST(ChildProcess, DISABLED_Sleeps)
{
    Sleep(600000);
}

} // namespace
