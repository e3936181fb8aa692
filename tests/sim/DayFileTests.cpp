#include "DayFile.h"

#include <gtest/gtest.h>
#include <winwlx.h>

namespace {

/// The step of a day's second line, behind Attach.
CStep ParseStep(const std::string& line)
{
    return ParseDay("Attach\n" + line + "\n", "day").at(1);
}

std::string GetError(const std::string& text)
{
    try {
        ParseDay(text, "day.txt");
    } catch (const CDayFileError& error) {
        return error.what();
    }
    return "no error";
}

TEST(DayFile, ReadsTheWordsOfAStep)
{
    const CStep step = ParseStep(
        "\tWlxLoggedOutSAS  sas=SC_INSERT gina returns NONE gina fails RAISE 0xC0000420 expect 9 answered by "
        "a.dll # why");
    EXPECT_EQ(step.nLine, 2);
    EXPECT_EQ(step.pCall->id, StandinCall::WlxLoggedOutSAS);
    EXPECT_EQ(step.passes.numbers[1], DWORD(WLX_SAS_TYPE_SC_INSERT));
    EXPECT_EQ(step.ginaResult, WLX_SAS_ACTION_NONE);
    EXPECT_EQ(step.failure, StandinFailure::StructuredException);
    EXPECT_EQ(step.dwFailureCode, 0xC0000420);
    EXPECT_EQ(step.expected, WLX_SAS_ACTION_FORCE_LOGOFF);
    EXPECT_EQ(step.answeringPlugin, "a.dll");
    EXPECT_FALSE(step.bExpectSkipped);
}

TEST(DayFile, TellsTextsNullAndDefaultsApart)
{
    const CStep step = ParseStep("WlxDisplayStatusMessage title=\"a # b = C:\\n\" message=NULL\r");
    EXPECT_EQ(**step.passes.texts[3], TEXT("a # b = C:\\n"));
    EXPECT_TRUE(step.passes.texts[4].has_value());
    EXPECT_FALSE(step.passes.texts[4]->has_value());
    EXPECT_FALSE(step.passes.numbers[2].has_value());
    EXPECT_EQ(**ParseStep("WlxInitialize station=\"NULL\"").passes.texts[0], TEXT("NULL"));
}

TEST(DayFile, ReadsStepsOfTheMachine)
{
    const CMachineStep command = ParseStep("Admin lumctl plugins add a.dll --x=1 expect 3 # why").machineStep;
    EXPECT_EQ(command.command, (std::vector<std::string>{"lumctl", "plugins", "add", "a.dll", "--x=1"}));
    EXPECT_EQ(command.dwExpectedStatus, 3u);
    const CMachineStep value = ParseStep("SetValue text=NULL name=b key=\"a b\\c\"").machineStep;
    EXPECT_EQ(value.key, TEXT("a b\\c"));
    EXPECT_EQ(value.name, TEXT("b"));
    EXPECT_FALSE(value.text.has_value());
    EXPECT_EQ(ParseStep("AwaitValue key=a name=b text=\"NULL\"").machineStep.text, "NULL");
}

TEST(DayFile, KeepsAnyResultThatAGinaCanReturn)
{
    struct
    {
        const char* szResult;
        LONG nResult;
    } const rows[] = {{"TRUE", 1}, {"7", 7}, {"-1", -1}, {"0x80000000", static_cast<LONG>(0x80000000)}};
    for (const auto& row : rows) {
        const CStep step = ParseStep(std::string("WlxIsLockOk gina returns ") + row.szResult);
        EXPECT_EQ(step.ginaResult, row.nResult) << row.szResult;
    }
}

TEST(DayFile, SaysWhereAnErrorIsAndWhatItExpected)
{
    struct
    {
        std::string text;
        std::string error;
    } const rows[] = {
        {"", "day.txt: a day without steps; expected Attach"},
        {"# only this\n", "day.txt: a day without steps; expected Attach"},
        {"WlxNegotiate", "day.txt:1: a step without the library; expected Attach before it"},
        {"Attach\nDetach\nDetach", "day.txt:3: a step without the library; expected Attach before it"},
        {"Attach\n\nAttach", "day.txt:3: Attach while the library is loaded; expected Detach before it"},
        {"Attach now", "day.txt:1: \"now\" behind Attach, Detach or Restart; expected nothing"},
        {"Attach\nRestart", "day.txt:2: Restart while the library is loaded; expected Detach before it"},
        {"Attach\nWlxNegotiate expect HANG\nDetach",
         "day.txt:3: a step behind a call that does not come back; expected Restart before it"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(GetError(row.text), row.error);
    }
    // In the second line, behind Attach.
    struct
    {
        std::string line;
        std::string error;
    } const lines[] = {
        {"WlxNap", "unknown step \"WlxNap\"; expected Attach, Detach, Restart, the name of an entry "
                   "point, as WlxNegotiate, or a step of the machine's"},
        {"Admin", "the end of the line; expected a program and its arguments"},
        {"Admin a expect b", "\"b\"; expected an exit status"},
        {"SetValue key=a name=b", "other arguments; expected key=, name=, text= once each"},
        {"AwaitFree dll=a dll=b", "other arguments; expected dll= once each"},
        {"Wait 1 s", "\"\"; expected a number of seconds, at most 86400"},
        {"Wait 86401", "\"86401\"; expected a number of seconds, at most 86400"},
        {"WlxIsLockOk sas=1", "unknown argument \"sas\"; expected none, since no argument of "
                              "WlxIsLockOk can be named here"},
        {"WlxWkstaLockedSAS context=1", "unknown argument \"context\"; expected sas="},
        {"WlxGetStatusMessage gives size=1", "unknown argument \"size\"; expected options=, message="},
        {"WlxIsLockOk reaches", "no argument; expected none, since no argument of WlxIsLockOk can be named "
                                "here"},
        {"WlxIsLockOk maybe",
         "unknown word \"maybe\"; expected ARGUMENT=VALUE, gina, expect, reaches, gives, "
         "loses or answered by"},
        {"WlxWkstaLockedSAS sas=1 sas=1", "sas= a second time; expected it once"},
        {"WlxGetStatusMessage size=4097", "size=4097; expected a buffer size in characters up to 4096"},
        {"WlxNegotiate version=1.9", "version=1.9; expected a version: 1.0, 1.1, 1.2, 1.3, 1.4 or a number"},
        {"WlxIsLockOk gina", "the end of the line; expected returns, negotiates or fails"},
        {"WlxIsLockOk gina negotiates 1.0",
         "gina negotiates; expected gina returns, gina fails or, in WlxNegotiate, gina negotiates"},
        {"WlxIsLockOk gina fails 1", "\"1\"; expected a way to fail: READ_NULL, DIVIDE_BY_ZERO, "
                                     "EXHAUST_STACK, THROW, RAISE, EXIT_PROCESS"},
        {"WlxIsLockOk gina fails RAISE", "the end of the line; expected a number"},
        {"WlxIsLockOk gina returns LOGON", "\"LOGON\"; expected a BOOL: FALSE, TRUE or a number"},
        {"WlxLogoff expect TRUE", "a result; expected none, since WlxLogoff returns nothing"},
        {"WlxIsLockOk expect 0x100000000", "\"0x100000000\"; expected a BOOL: FALSE, TRUE or a number"},
        {"WlxIsLockOk expect HANG expect FALSE", "expect a second time; expected it once"},
        {"WlxIsLockOk answered", "the end of the line; expected by"},
        {"WlxIsLockOk answered to", "answered to; expected answered by"},
        {"WlxIsLockOk answered by", "the end of the line; expected the name of a DLL"},
        {"WlxInitialize station=\"a", "a text without end; expected a closing quote"},
        {"WlxInitialize station=\"a\"b", "characters right behind a closing quote; expected a blank"},
    };
    for (const auto& row : lines) {
        EXPECT_EQ(GetError("Attach\n" + row.line), "day.txt:2: " + row.error) << row.line;
    }
    EXPECT_THROW(ReadDayFile("no/such/day.txt"), CDayFileError);
}

} // namespace
