#include <type_traits>

#include "GlobalObject.h"
#include "Messages.h"
#include "TestMachine.h"

namespace {

constexpr WCHAR PATH[] = TEXT("common\\File.cpp");

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

TEST_F(Messages, WithoutAReadableFormatAreNotWritten)
{
    constexpr char BAD[] = "[WARNING] Improperly formed format message";
    const std::pair<const WCHAR*, const char*> rows[] = {
        {TEXT("%s"), BAD},         {TEXT("%q"), BAD}, {TEXT("%d %d"), BAD},
        {TEXT("trailing %"), BAD}, {nullptr, BAD},    {reinterpret_cast<const WCHAR*>(0x40), UNHANDLED}};
    for (const auto& [szFormat, szFirst] : rows) {
        ClearLog();
        CMessageArgList message(LEVEL_ERROR, LUM_GINA_APP, LUM_GINA_MTM, true, szFormat, 1);
        EXPECT_FALSE(message.m_bFormatted);
        EXPECT_FALSE(message.m_bWritten);
        message.Write();
        EXPECT_TRUE(message.m_bWritten);
        EXPECT_TRUE(Log().empty());
        EXPECT_EQ((Lines{szFirst, BAD}), InternalLog());
    }
    EXPECT_FALSE(Make(TEXT("%s"), reinterpret_cast<const WCHAR*>(0x40)).m_bFormatted);
    EXPECT_FALSE(LogMessage(LUM_GINA_APP, TEXT("WARNING"), nullptr, 7, PATH));
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

/// The text of an exception made with these details, as a handler for CMessage finds it.
template <typename E, typename... Details>
std::string TextOf(Details... details)
{
    try {
        throw E(LUM_GINA_APP, LUM_GINA_MTM, TEXT("Text"), details..., 7, PATH);
    } catch (CMessage& message) {
        EXPECT_TRUE(message.m_bWritten);
        message.WriteIfUnwritten();
        return Narrow(message.m_szMessage);
    }
}

template <typename Base, typename... E, typename... Details>
void ExpectText(const std::string& expected, Details... details)
{
    static_assert((std::is_base_of_v<Base, E> && ...));
    for (const std::string& text : {TextOf<E>(details...)...}) {
        EXPECT_EQ("Text" + expected + ", ( 7 ) File.cpp", text);
    }
}

TEST_F(Messages, OfExceptionsTellTheirDetails)
{
    ExpectText<CDetailedMessage, CUnhandledExceptionException, CWcscpyException, CLUMInitializeFailException,
               CNoGINAorPluginToCallException, CUnableToLoadPassthroughGinaException, CNoPluginsNotification,
               CRegistryKeyInitException, CRegistryValueInitException, CRegistryStringInitException,
               CRegistryDwordInitException, CGinaChainingObjectInitException,
               CGinaChainingInfoObjectInitException, CRegistryManagerInitException,
               CCantInsertUnknownGinaException, CThreadObjectInitException,
               CLUMPipeThreadObjectInitException>("");
    ExpectText<CDetailedMessageWithError, CFailedGinaNegotiationsException, CFreeGinaDLLFailException,
               CCreateEventException, CResetEventException, CSetEventException, CCreateNamedPipeException,
               CReadFileException, CWriteFileException, CFlushFileBuffersException,
               CDisconnectNamedPipeException, CLoadResourceException, CLockResourceException>(", Error: 0xab",
                                                                                              0xAB);
    ExpectText<CMessage, CBadArgException>(", Argument: x", TEXT("x"));
    ExpectText<CMessage, CMemAllocException>(", Variable: x", TEXT("x"));
    ExpectText<CMessage, CNullFunctionHandleException, CUnexpectedEndOfListException,
               CUnexpectedGinaException, CUnhandledPluginException>(", Plugin: x", TEXT("x"));
    ExpectText<CMessage, CUnableToLoadDLLException>(", Filename: x, Error: 0xab", TEXT("x"), 0xAB);
    ExpectText<CMessage, CUnableToLoadDLLFunctionException>(", Function: x, Error: 0xab", TEXT("x"), 0xAB);
    ExpectText<CMessage, CUnableToReadRegistryException, CUnableToWriteRegistryException,
               CUnableToDeleteRegistryValueException>(", Registry Value: x, Error: 0xab", TEXT("x"), 0xAB);
    ExpectText<CMessage, CUnableToOpenRegistryKeyException, CUnableToCreateRegistryKeyException,
               CUnableToCloseRegistryKeyException>(", Registry Key: x, Error: 0xab", TEXT("x"), 0xAB);
    ExpectText<CMessage, CUnableToFreeResourceDLLException>(", File: x, Error: 0xab", TEXT("x"), 0xAB);
    ExpectText<CMessage, CUnableToCreateThreadException>(", Thread: x, Error: 171", TEXT("x"), 0xAB);
    ExpectText<CMessage, CUnableToFindResourceException>(", Resource ID: 1, Error: 0xab", 1, 0xAB);
    EXPECT_EQ(3, Count("[EXCEPTION] Text, Registry Key: x, Error: 0xab")) << "written once";
    EXPECT_EQ(1, Count("[CRITICAL] Text")) << "the exception of a host without a module handle";
    EXPECT_EQ(0, Count("[NOTIFICATION] Text")) << "masked by default";
    const CDetailedMessageWithError error(LEVEL_ERROR, LUM_GINA_APP, LUM_GINA_MTM, TEXT("Text"), 5, 7, PATH,
                                          true);
    EXPECT_EQ(5u, error.m_dwError);
    EXPECT_EQ(1, Count("[ERROR] Text, Error: 0x5"));
    CBadArgException{LUM_GINA_ORIGIN, TEXT("szPlugin")};
    EXPECT_EQ("[EXCEPTION] A bad argument was provided, Argument: szPlugin", Log().back());
    EXPECT_NE(std::string::npos, RawLog().find(") MessagesTests.cpp")) << "where it was made";
    EXPECT_EQ("c.cpp", Narrow(GetFileName(TEXT("c.cpp"))));
    EXPECT_EQ(nullptr, GetFileName(nullptr));
    EXPECT_EQ(Lines{"[EXCEPTION] Null source file"}, InternalLog());
}

TEST_F(Messages, MayFailToBeWrittenAndAreCopied)
{
    struct COwnMessage : CMessage
    {
        using CMessage::CMessage;
        void Write() override { throw 1; }
    } own(LEVEL_ERROR, LUM_GINA_APP, LUM_GINA_MTM);
    own.WriteIfUnwritten();
    EXPECT_EQ(Lines{UNHANDLED}, InternalLog());
    const CBadArgException exception(LUM_GINA_ORIGIN, TEXT("x"));
    const CBadArgException copy = exception;
    EXPECT_EQ(Narrow(exception.m_szMessage), Narrow(copy.m_szMessage));
    EXPECT_NE(copy.m_szMessage, exception.m_szMessage);
}

TEST_F(Messages, OfAnObjectHaveItsTagAndKey)
{
    const CGlobalObject object(LUM_GINA_APP, LUM_GINA_MTM);
    EXPECT_TRUE(object.szAPP == LUM_GINA_APP && object.szMTM == LUM_GINA_MTM);
    const CGlobalObject nameless(nullptr, LUM_GINA_MTM);
    EXPECT_EQ("MESSAGE_APP", Narrow(nameless.szAPP));
    const CGlobalObject keyless(LUM_GINA_APP, nullptr);
    EXPECT_TRUE(keyless.szAPP == nullptr && keyless.szMTM == nullptr);
    EXPECT_EQ((Lines{"[EXCEPTION] A bad argument was provided, Argument: szAPP",
                     "[EXCEPTION] A bad argument was provided, Argument: szMTM"}),
              InternalLog());
}

} // namespace
