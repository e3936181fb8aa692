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

/// A pipe of the right name.
class FalseServer : public testing::Test
{
protected:
    FalseServer()
        : m_hPipe(CreateNamedPipeW(ControlProtocol::PIPE_NAME, PIPE_ACCESS_DUPLEX | WRITE_OWNER, PIPE_NOWAIT,
                                   1, 4096, 4096, 10, nullptr))
    {
        EXPECT_NE(m_hPipe, INVALID_HANDLE_VALUE);
    }
    ~FalseServer() override { CloseHandle(m_hPipe); }

    /// Answers every request with the bytes, and disconnects once the client has read them.
    void AnswerWith(const std::string& bytes)
    {
        m_Answer = bytes;
        m_hThread = CreateThread(nullptr, 0, Answer, this, 0, nullptr);
    }
    void Join()
    {
        WaitForSingleObject(m_hThread, INFINITE);
        CloseHandle(m_hThread);
    }

private:
    static DWORD WINAPI Answer(LPVOID pServer)
    {
        FalseServer& server = *static_cast<FalseServer*>(pServer);
        while (ConnectNamedPipe(server.m_hPipe, nullptr) || GetLastError() != ERROR_PIPE_CONNECTED) {
            Sleep(1);
        }
        DWORD cbMoved = 0;
        DWORD dwMode = PIPE_WAIT;
        char szRequest[2048];
        SetNamedPipeHandleState(server.m_hPipe, &dwMode, nullptr, nullptr);
        ReadFile(server.m_hPipe, szRequest, sizeof(szRequest), &cbMoved, nullptr);
        WriteFile(server.m_hPipe, server.m_Answer.data(), static_cast<DWORD>(server.m_Answer.size()),
                  &cbMoved, nullptr);
        FlushFileBuffers(server.m_hPipe);
        DisconnectNamedPipe(server.m_hPipe);
        dwMode = PIPE_NOWAIT;
        SetNamedPipeHandleState(server.m_hPipe, &dwMode, nullptr, nullptr);
        ConnectNamedPipe(server.m_hPipe, nullptr);
        return 0;
    }

    HANDLE m_hPipe;
    HANDLE m_hThread = nullptr;
    std::string m_Answer;
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
        {"success", std::string(1, '\0'), [&] { return client.Verify(); }, ControlStatus::Success},
        {"another byte", "\7", [&] { return client.Verify(); }, ControlStatus::BadAnswer},
        {"half a version", "\1\2", [&] { return client.GetVersion(dwVersion); }, ControlStatus::NoAnswer},
        {"failure", "\1", [&] { return client.GetPassthroughGina(record); }, ControlStatus::Refused},
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
