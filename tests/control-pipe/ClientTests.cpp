#include "FalseServer.h"
#include "PipeMachine.h"

// What the client library makes of servers that are not there, not in time or not what they seem.

namespace {

constexpr DWORD SHORT_WAIT = 100;

TEST(ControlClient, TellsThatThereIsNoServer)
{
    CControlClient client;
    EXPECT_EQ(client.Verify(), ControlStatus::NoServer);
    EXPECT_EQ(client.GetSystemError(), DWORD(ERROR_FILE_NOT_FOUND));
}

class FalseServer : public CFalseServer
{
};

TEST_F(FalseServer, IsNotWaitedForLongerThanAllowed)
{
    EXPECT_EQ(CControlClient({SHORT_WAIT, nullptr}).Verify(), ControlStatus::TimedOut) << "it never polls";
    int nCalls = 0;
    DWORD dwLast = 0;
    const auto giveUp = [&](DWORD dwWaited) {
        EXPECT_GE(dwWaited, dwLast);
        dwLast = dwWaited;
        return ++nCalls < 3;
    };
    EXPECT_EQ(CControlClient({60000, giveUp}).Verify(), ControlStatus::Cancelled) << "the first one has it";
    EXPECT_EQ(nCalls, 3);
}

TEST_F(FalseServer, IsNotBelieved)
{
    ControlProtocol::CWireRecord record = {};
    DWORD dwVersion = 0;
    CControlClient client({60000, nullptr});
    const struct
    {
        const char* szWhat;
        std::string answer;
        std::function<ControlStatus()> ask;
        ControlStatus expected;
    } rows[] = {
        {"nothing", "", [&] { return client.Verify(); }, ControlStatus::NoAnswer},
        {"half a version", "\1\2", [&] { return client.GetVersion(dwVersion); }, ControlStatus::NoAnswer},
        {"half a record", std::string(16, '\0'), [&] { return client.GetPassthroughGina(record); },
         ControlStatus::NoAnswer},
        {"no record", std::string(1, '\0'), [&] { return client.QueryPluginInfo(TEXT("x"), record); },
         ControlStatus::NoAnswer},
    };
    for (const auto& row : rows) {
        AnswerWith(row.answer);
        EXPECT_EQ(row.ask(), row.expected) << row.szWhat;
        Join();
    }
}

} // namespace
