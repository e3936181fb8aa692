#include <type_traits>

#include "Contract.h"
#include "GlobalObject.h"
#include "Messages.h"

namespace {

constexpr WCHAR PATH[] = TEXT("common\\File.cpp");

/// The text of an exception made with these details, as a handler for CMessage finds it.
template <typename E, typename... Details>
std::string TextOf(Details... details)
{
    try {
        throw E(TAG, KEY, TEXT("Text"), details..., 7, PATH);
    } catch (CMessage& message) {
        EXPECT_TRUE(message.m_bWritten);
        return Narrow(message.m_szMessage);
    }
}

template <typename... E>
void ExpectPlain()
{
    for (const std::string& text : {TextOf<E>()...}) {
        EXPECT_EQ("Text, ( 7 ) File.cpp", text);
    }
    static_assert((std::is_base_of_v<CDetailedMessage, E> && ...));
}

template <typename... E>
void ExpectError()
{
    for (const std::string& text : {TextOf<E>(0xAB)...}) {
        EXPECT_EQ("Text, Error: 0xab, ( 7 ) File.cpp", text);
    }
    EXPECT_TRUE(((E(TAG, KEY, TEXT("Text"), 5, 7, PATH).m_dwError == 5) && ...));
}

template <typename... E>
void ExpectName(const std::string& name)
{
    for (const std::string& text : {TextOf<E>(TEXT("x"))...}) {
        EXPECT_EQ("Text, " + name + ": x, ( 7 ) File.cpp", text);
    }
}

template <typename... E>
void ExpectNameAndError(const std::string& name, const std::string& error = "0xab")
{
    for (const std::string& text : {TextOf<E>(TEXT("x"), 0xAB)...}) {
        EXPECT_EQ("Text, " + name + ": x, Error: " + error + ", ( 7 ) File.cpp", text);
    }
}

TEST_F(Contract, DiagnosticsExceptions)
{
    ExpectPlain<CUnhandledExceptionException, CWcscpyException, CLUMInitializeFailException,
                CNoGINAorPluginToCallException, CUnableToLoadPassthroughGinaException, CNoPluginsNotification,
                CRegistryKeyInitException, CRegistryValueInitException, CRegistryStringInitException,
                CRegistryDwordInitException, CGinaChainingObjectInitException,
                CGinaChainingInfoObjectInitException, CRegistryManagerInitException,
                CCantInsertUnknownGinaException, CThreadObjectInitException,
                CLUMPipeThreadObjectInitException>();
    ExpectError<CFailedGinaNegotiationsException, CFreeGinaDLLFailException, CCreateEventException,
                CResetEventException, CSetEventException, CCreateNamedPipeException, CReadFileException,
                CWriteFileException, CFlushFileBuffersException, CDisconnectNamedPipeException,
                CLoadResourceException, CLockResourceException>();
    ExpectName<CBadArgException>("Argument");
    ExpectName<CMemAllocException>("Variable");
    ExpectName<CNullFunctionHandleException, CUnexpectedEndOfListException, CUnexpectedGinaException,
               CUnhandledPluginException>("Plugin");
    ExpectNameAndError<CUnableToLoadDLLException>("Filename");
    ExpectNameAndError<CUnableToLoadDLLFunctionException>("Function");
    ExpectNameAndError<CUnableToReadRegistryException, CUnableToWriteRegistryException,
                       CUnableToDeleteRegistryValueException>("Registry Value");
    ExpectNameAndError<CUnableToOpenRegistryKeyException, CUnableToCreateRegistryKeyException,
                       CUnableToCloseRegistryKeyException>("Registry Key");
    ExpectNameAndError<CUnableToFreeResourceDLLException>("File");
    ExpectNameAndError<CUnableToCreateThreadException>("Thread", "171");
    EXPECT_EQ("Text, Resource ID: 1, Error: 0xab, ( 7 ) File.cpp",
              TextOf<CUnableToFindResourceException>(1, 0xAB));
    EXPECT_EQ(3, Count("[EXCEPTION] Text, Registry Key: x, Error: 0xab"));
    EXPECT_EQ(1, Count("[CRITICAL] Text")) << "the exception of a host without a module handle";
    EXPECT_EQ(0, Count("[NOTIFICATION] Text")) << "masked by default";
}

TEST_F(Contract, DiagnosticsMessages)
{
    CMessageArgList list(LEVEL_WARNING, TAG, KEY, false, TEXT("%s %d 0x%x"), TEXT("a"), -1, 255);
    EXPECT_TRUE(list.m_bFormatted);
    EXPECT_FALSE(list.m_bWritten);
    EXPECT_EQ("a -1 0xff", Narrow(list.m_szMessage));
    list.Write();
    EXPECT_TRUE(list.m_bWritten);
    CDetailedMessage(LEVEL_ERROR, TAG, KEY, TEXT("Text"), 7, PATH, true);
    const CDetailedMessageWithError error(LEVEL_ERROR, TAG, KEY, TEXT("Text"), 5, 7, PATH, true);
    EXPECT_EQ(5u, error.m_dwError);
    EXPECT_TRUE(WriteLogLine(TAG, TEXT("LABEL"), TEXT("line")));
    EXPECT_EQ((std::vector<std::string>{"[WARNING] a -1 0xff", "[ERROR] Text", "[ERROR] Text, Error: 0x5",
                                        "[LABEL] line"}),
              Log());

    EXPECT_EQ("c.cpp", Narrow(GetFileName(TEXT("a\\b\\c.cpp"))));
    EXPECT_EQ("c.cpp", Narrow(GetFileName(TEXT("c.cpp"))));
    EXPECT_EQ(nullptr, GetFileName(nullptr));

    // What cannot be read costs the message its text and nothing else.
    EXPECT_FALSE(CMessageArgList(LEVEL_ERROR, TAG, KEY, true, nullptr).m_bFormatted);
    EXPECT_FALSE(CMessageArgList(LEVEL_ERROR, TAG, KEY, true, TEXT("%s"), reinterpret_cast<WCHAR*>(0x40))
                     .m_bFormatted);
    EXPECT_FALSE(LogMessage(TAG, TEXT("WARNING"), nullptr, 7, PATH));
    EXPECT_EQ((std::vector<std::string>{"[EXCEPTION] Null source file",
                                        "[WARNING] Improperly formed format message",
                                        "[WARNING] An unhandled exception occurred"}),
              InternalLog());
}

TEST_F(Contract, DiagnosticsOwnMessagesAndCopies)
{
    struct COwnMessage : CMessage
    {
        using CMessage::CMessage;
        void Write() override { throw 1; }
    } own(LEVEL_ERROR, TAG, KEY);
    own.WriteIfUnwritten();
    try {
        throw CBadArgException(TAG, KEY, TEXT("Text"), TEXT("x"), 7, PATH);
    } catch (const CBadArgException& exception) {
        const CBadArgException copy = exception;
        EXPECT_EQ("Text, Argument: x, ( 7 ) File.cpp", Narrow(copy.m_szMessage));
        EXPECT_NE(copy.m_szMessage, exception.m_szMessage);
    }
    EXPECT_EQ(std::vector<std::string>{"[WARNING] An unhandled exception occurred"}, InternalLog());
}

TEST_F(Contract, DiagnosticsObjectsOfTheSystem)
{
    EXPECT_TRUE(LogMessage(TEXT("MESSAGE_APP"), TEXT("WARNING"), TEXT("Text"), 7, PATH));
    const CGlobalObject object(TAG, KEY);
    EXPECT_TRUE(object.szAPP == TAG && object.szMTM == KEY);
    const CGlobalObject nameless(nullptr, KEY);
    EXPECT_EQ("MESSAGE_APP", Narrow(nameless.szAPP));
    const CGlobalObject keyless(TAG, nullptr);
    EXPECT_TRUE(keyless.szAPP == nullptr && keyless.szMTM == nullptr);
    EXPECT_EQ((std::vector<std::string>{"[WARNING] Text",
                                        "[EXCEPTION] A bad argument was provided, Argument: szAPP",
                                        "[EXCEPTION] A bad argument was provided, Argument: szMTM"}),
              InternalLog());
}

} // namespace
