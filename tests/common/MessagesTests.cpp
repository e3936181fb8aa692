#include "Exceptions.h"
#include "TestMachine.h"

namespace {

class Messages : public CTestMachine
{
};

/// A message to look at: it need not have been written.
template <typename... Args>
CMessageArgList Make(const WCHAR* szFormat, Args... args)
{
    return CMessageArgList(LEVEL_WARNING, LUM_GINA_APP, LUM_GINA_MTM, false, szFormat, args...);
}

TEST_F(Messages, TextsFollowTheirFormat)
{
    struct
    {
        const char* szExpected;
        CMessageArgList message;
    } rows[] = {
        {"plain 100%", Make(TEXT("plain 100%%"))},
        {"a and null (null)",
         Make(TEXT("%s and %s %s"), TEXT("a"), "null", static_cast<const WCHAR*>(nullptr))},
        {"-1 2147483647 -2147483648", Make(TEXT("%d %d %d"), -1, 2147483647, -2147483647 - 1)},
        {"0x0 0xdeadbeef", Make(TEXT("0x%x 0x%x"), 0, 0xDEADBEEF)},
        {"surplus", Make(TEXT("surplus"), 1, 2)},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(row.message.m_bFormatted);
        EXPECT_EQ(row.szExpected, Narrow(row.message.m_szMessage));
    }
}

TEST_F(Messages, AreCutAtTheBound)
{
    const std::basic_string<WCHAR> longText(5000, 'x');
    const CMessageArgList message = Make(TEXT("%s!"), longText.c_str());
    EXPECT_TRUE(message.m_bFormatted);
    EXPECT_EQ(std::string(3 + 1086, 'x'), Narrow(message.m_szMessage));
}

TEST_F(Messages, MalformedFormatsAreNotWritten)
{
    for (const WCHAR* szFormat : {TEXT("%s"), TEXT("%q"), TEXT("%d %d"), TEXT("trailing %")}) {
        ClearLog();
        CMessageArgList message(LEVEL_ERROR, LUM_GINA_APP, LUM_GINA_MTM, true, szFormat, 1);
        EXPECT_FALSE(message.m_bFormatted);
        EXPECT_FALSE(message.m_bWritten);
        message.Write();
        EXPECT_TRUE(message.m_bWritten);
        EXPECT_TRUE(Log().empty());
        const Lines twice(2, "[WARNING] Improperly formed format message");
        EXPECT_EQ(twice, InternalLog());
    }
}

TEST_F(Messages, TagAndKeyDecideWhereTheyGo)
{
    SetTraceMask(LEVEL_ENTRY);
    struct
    {
        const WCHAR* szAPP;
        const WCHAR* szMTM;
        DWORD dwLevel;
        std::size_t nOwn;
        std::size_t nInternal;
    } rows[] = {
        {LUM_GINA_APP, LUM_GINA_MTM, LEVEL_ENTRY, 1, 0},
        {LUM_GINA_APP, LUM_GINA_MTM, LEVEL_ERROR, 0, 0},
        // Without a tag the key still rules; without a key the default mask does.
        {nullptr, LUM_GINA_MTM, LEVEL_ENTRY, 0, 1},
        {LUM_GINA_APP, nullptr, LEVEL_ENTRY, 0, 0},
        {LUM_GINA_APP, nullptr, LEVEL_ERROR, 0, 1},
        {nullptr, nullptr, LEVEL_WARNING, 0, 1},
    };
    for (const auto& row : rows) {
        ClearLog();
        CMessageArgList(row.dwLevel, row.szAPP, row.szMTM, true, TEXT("text"));
        EXPECT_EQ(row.nOwn, Log().size());
        EXPECT_EQ(row.nInternal, InternalLog().size());
    }
}

TEST_F(Messages, AreWrittenOnceAndCaughtByTheirBases)
{
    try {
        throw CBadArgException(LUM_GINA_ORIGIN, TEXT("szPlugin"));
    } catch (CMessage& message) {
        EXPECT_TRUE(message.m_bWritten);
        message.WriteIfUnwritten();
    }
    EXPECT_EQ(Lines{"[EXCEPTION] A bad argument was provided, Argument: szPlugin"}, Log());
    EXPECT_NE(std::string::npos, RawLog().find(") MessagesTests.cpp")) << "where it was made";
    EXPECT_THROW(throw CNoPluginsNotification(LUM_GINA_ORIGIN), CMessage);
    EXPECT_THROW(throw CWcscpyException(LUM_GINA_ORIGIN), CDetailedMessage);
    EXPECT_THROW(throw CFreeGinaDLLFailException(LUM_GINA_ORIGIN, 1), CDetailedMessageWithError);
}

} // namespace
