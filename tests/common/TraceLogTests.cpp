#include <atomic>
#include <ctime>
#include <memory>
#include <regex>

#include "GlobalObject.h"
#include "Handles.h"
#include "Operation.h"
#include "TestMachine.h"
#include "Thread.h"

namespace {

class TraceLog : public CTestMachine
{
};

class CTraced : public CGlobalObject
{
public:
    CTraced() : CGlobalObject(LUM_GINA_APP, LUM_GINA_MTM) {}
    ~CTraced() = default;

    template <typename Body>
    auto Do(Body body)
    {
        const COperation op(*this, TEXT("CTraced"), TEXT("Do"));
        return op.Run(Absorb<>(), body);
    }
};

constexpr const char* LEVELS[] = {
    "DEBUG",
    "ENTRY",
    "EXIT ",
    "NOTIFICATION",
    "WARNING",
    "EXCEPTION",
    "CRITICAL",
    "ERROR",
    "CONSTRUCTION ENTRY",
    "CONSTRUCTION EXIT",
    "DESTRUCTION ENTRY",
    "DESTRUCTION EXIT",
};

void WriteAllLevels()
{
    for (DWORD dwBit = 0; dwBit < std::size(LEVELS); ++dwBit) {
        CMessageArgList(1u << dwBit, LUM_GINA_APP, LUM_GINA_MTM, true, TEXT("text"));
    }
}

TEST_F(TraceLog, MaskSelectsLevels)
{
    for (const DWORD dwMask : {0xFFFu, 0x0u, 0x6u, 0x801u}) {
        ClearLog();
        SetTraceMask(dwMask);
        WriteAllLevels();
        Lines expected;
        for (DWORD dwBit = 0; dwBit < std::size(LEVELS); ++dwBit) {
            if ((dwMask & 1u << dwBit) != 0) {
                expected.push_back(std::string("[") + LEVELS[dwBit] + "] text");
            }
        }
        EXPECT_EQ(expected, Log()) << dwMask;
    }
}

TEST_F(TraceLog, DefaultMaskWithoutAUsableValue)
{
    const Lines expected = {"[WARNING] text", "[EXCEPTION] text", "[CRITICAL] text", "[ERROR] text"};
    WriteAllLevels();
    EXPECT_EQ(expected, Log());
    ClearLog();
    SetBytes(OWN_KEY, TEXT("Debug"), REG_BINARY, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 8);
    WriteAllLevels();
    EXPECT_EQ(expected, Log());
}

TEST_F(TraceLog, FollowsItsKeyWhateverBecomesOfIt)
{
    std::atomic<bool> bStop = false;
    const auto look = [&] {
        while (!bStop) {
            IsTraceEnabled(LEVEL_ENTRY, LUM_GINA_MTM);
        }
    };
    IsTraceEnabled(LEVEL_ENTRY, LUM_GINA_MTM);
    const DWORD dwHandles = CountHandles();
    {
        CThread threads[] = {CThread(look), CThread(look), CThread(look), CThread(look)};
        // Also when an assertion leaves the scope, whose end waits for the threads.
        const std::unique_ptr<std::atomic<bool>, void (*)(std::atomic<bool>*)> stop(
            &bStop, [](auto* pStop) { *pStop = true; });
        for (int n = 0; n < 600; ++n) {
            SetTraceMask(LEVEL_ENTRY);
            ASSERT_TRUE(IsTraceEnabled(LEVEL_ENTRY, LUM_GINA_MTM)) << n;
            SetTraceMask(LEVEL_EXIT);
            ASSERT_FALSE(IsTraceEnabled(LEVEL_ENTRY, LUM_GINA_MTM)) << n;
            DeleteValue(OWN_KEY, TEXT("Debug"));
            ASSERT_TRUE(IsTraceEnabled(DEFAULT_TRACE_MASK, LUM_GINA_MTM)) << n;
            SetBytes(OWN_KEY, TEXT("Debug"), REG_BINARY, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 8);
            ASSERT_FALSE(IsTraceEnabled(LEVEL_ENTRY, LUM_GINA_MTM)) << n;
            SetTraceMask(LEVEL_ENTRY);
            ASSERT_TRUE(IsTraceEnabled(LEVEL_ENTRY, LUM_GINA_MTM)) << n;
            ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyW(HKEY_LOCAL_MACHINE, OWN_KEY));
            ASSERT_TRUE(IsTraceEnabled(DEFAULT_TRACE_MASK, LUM_GINA_MTM)) << n;
        }
    }
    IsTraceEnabled(LEVEL_ENTRY, LUM_GINA_MTM);
    EXPECT_EQ(dwHandles, CountHandles());
}

TEST_F(TraceLog, LineHasTimeTagLabelAndLineEnd)
{
    SetTraceMask(0xFFF);
    CTraced().Do([] { return true; });
    static const std::regex pattern(
        "(Sun|Mon|Tue|Wed|Thu|Fri|Sat) (Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) "
        "\\d\\d \\d\\d:\\d\\d:\\d\\d \\d{4} LUM_GINA: \\[ENTRY\\] CTraced::Do, \\( \\d+ \\) "
        "TraceLogTests.cpp\r\n"
        ".{24} LUM_GINA: \\[EXIT \\] CTraced::Do, Return: 0x1, \\( \\d+ \\) TraceLogTests.cpp\r\n");
    EXPECT_TRUE(std::regex_match(RawLog(), pattern)) << RawLog();
    const std::time_t now = std::time(nullptr);
    char szDay[12];
    std::strftime(szDay, sizeof(szDay), "%a %b %d ", std::localtime(&now));
    EXPECT_EQ(szDay, RawLog().substr(0, 11));
}

TEST_F(TraceLog, IsInTheCodePageOfTheSystem)
{
    EXPECT_TRUE(WriteLogLine(LUM_GINA_APP, TEXT("ERROR"), TEXT("\u00E9\u20AC\u4E2De\u0301U\u0308s\u030C")));
    EXPECT_EQ(Lines{"[ERROR] \xE9\x80?\xE9\xDC\x9A"}, Log());
}

TEST_F(TraceLog, LevelOutsideTheTableIsAHeader)
{
    SetTraceMask(0xFFFFFFFF);
    CMessageArgList(LEVEL_ENTRY | LEVEL_EXIT, LUM_GINA_APP, LUM_GINA_MTM, true, TEXT("text"));
    EXPECT_EQ(Lines{"[HEADER] text"}, Log());
}

TEST_F(TraceLog, NothingIsWrittenWithoutADestination)
{
    SetTraceMask(0xFFF);
    DeleteValue(DEBUG_KEY, TEXT("LUM_GINA"));
    WriteAllLevels();
    EXPECT_TRUE(Log().empty());
    EXPECT_FALSE(WriteLogLine(LUM_GINA_APP, TEXT("ERROR"), TEXT("text")));
    EXPECT_TRUE(LogMessage(ERR_MESSAGE_APP, TEXT("WARNING"), TEXT("text"), 1, TEXT("c.cpp")));
    EXPECT_EQ(Lines{"[WARNING] text"}, InternalLog());
}

TEST_F(TraceLog, DirectoryIsMadeOneLevelDeep)
{
    const auto write = [](const WCHAR* szPath) {
        SetString(DEBUG_KEY, TEXT("LUM_GINA"), szPath);
        return WriteLogLine(LUM_GINA_APP, TEXT("ERROR"), TEXT("text"));
    };
    EXPECT_TRUE(write(TEXT("TraceLogNew\\trace.log")));
    EXPECT_TRUE(write(TEXT("TraceLogNew\\trace.log")));
    EXPECT_FALSE(write(TEXT("TraceLogDeep\\below\\trace.log")));
    EXPECT_EQ(0, std::remove("TraceLogNew/trace.log"));
    // A path that is not terminated, or longer than its room, is not followed beyond it.
    const std::basic_string<WCHAR> longPath(300, 'x');
    SetBytes(DEBUG_KEY, TEXT("LUM_GINA"), REG_SZ, longPath.data(), 600);
    EXPECT_FALSE(WriteLogLine(LUM_GINA_APP, TEXT("ERROR"), TEXT("text")));
}

TEST_F(TraceLog, MaskedOutStatementsAreFormattedWhenTheyAreWrittenAfterAll)
{
    SetTraceMask(0);
    CKeyWarning warning(LUM_GINA_ORIGIN, ERR_OPERATION_FAILED, TEXT("Key"));
    EXPECT_EQ(nullptr, warning.m_szMessage);
    EXPECT_TRUE(warning.m_bWritten);
    SetTraceMask(LEVEL_WARNING);
    warning.Write();
    EXPECT_EQ(Lines{"[WARNING] The requested operation failed or it was cancelled, Key: Key"}, Log());
}

TEST_F(TraceLog, OperationsReportHowTheyEnd)
{
    SetTraceMask(0xFFF);
    CTraced traced;
    EXPECT_FALSE(traced.Do([] { return false; }));
    EXPECT_EQ(SAS_ACTION_NONE, traced.Do([]() -> SasAction { throw 1; }));
    traced.Do([]() -> void { throw 1; });
    EXPECT_EQ((Lines{"[ENTRY] CTraced::Do", "[WARNING] The requested operation failed or it was cancelled",
                     "[EXIT ] CTraced::Do, Return: 0x0", "[ENTRY] CTraced::Do",
                     "[WARNING] An unhandled exception occurred",
                     "[WARNING] The requested operation failed or it was cancelled",
                     "[EXIT ] CTraced::Do, Return: 0x2", "[ENTRY] CTraced::Do",
                     "[WARNING] An unhandled exception occurred", "[EXIT ] CTraced::Do"}),
              Log());
}

} // namespace
