#include "Message.h"
#include "TestMachine.h"
#include "Thread.h"
#include "TraceLog.h"

// Not under Wine: it looks up the end of the file itself before it appends, so that lines can get lost there.

namespace {

using TraceLogThreads = CTestMachine;

TEST_F(TraceLogThreads, LoseNoLineOfEachOther)
{
    constexpr int LINES = 300;
    const auto write = [] {
        for (int i = 0; i < LINES; ++i) {
            EXPECT_TRUE(WriteLogLine(LUM_GINA_APP, TEXT("ERROR"), TEXT("text")));
        }
    };
    {
        CThread threads[] = {CThread(write), CThread(write), CThread(write)};
    }
    EXPECT_EQ(std::vector<std::string>(3 * LINES, "[ERROR] text"), Log());
}

} // namespace
