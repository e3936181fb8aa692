#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

constexpr WCHAR NAME[] = TEXT("\\\\.\\pipe\\LumPlatformTestPipe");
constexpr DWORD NOWAIT = PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_NOWAIT;
/// For steps where Windows, Wine and the native layer agree only in that the call fails.
constexpr DWORD SOME_ERROR = 0xFFFFFFFF;

DWORD StatusOf(BOOL bResult)
{
    return bResult ? DWORD(ERROR_SUCCESS) : GetLastError();
}

/// The server's end, a client's end, and what can be done with them: each gives an error code.
class Pipes : public testing::Test
{
protected:
    Pipes() { EXPECT_EQ(Create(m_hServer), DWORD(ERROR_SUCCESS)); }
    ~Pipes() override
    {
        Hangup();
        CloseHandle(m_hServer);
    }

    static DWORD Create(HANDLE& hPipe)
    {
        hPipe = CreateNamedPipeW(NAME, PIPE_ACCESS_DUPLEX | WRITE_OWNER, NOWAIT, 1, 4096, 4096, 10, nullptr);
        return StatusOf(hPipe != INVALID_HANDLE_VALUE);
    }
    static DWORD OpenAs(HANDLE& hClient, DWORD dwAccess = GENERIC_READ | GENERIC_WRITE)
    {
        hClient = CreateFileW(NAME, dwAccess, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        return StatusOf(hClient != INVALID_HANDLE_VALUE);
    }
    DWORD Open() { return OpenAs(m_hClient); }
    DWORD OpenAnother()
    {
        HANDLE hOther = nullptr;
        return OpenAs(hOther);
    }
    DWORD Hangup()
    {
        const BOOL bClosed = CloseHandle(m_hClient);
        m_hClient = INVALID_HANDLE_VALUE;
        return StatusOf(bClosed);
    }
    DWORD Connect() { return StatusOf(ConnectNamedPipe(m_hServer, nullptr)); }
    DWORD Disconnect() { return StatusOf(DisconnectNamedPipe(m_hServer)); }
    DWORD Flush() { return StatusOf(FlushFileBuffers(m_hServer)); }
    DWORD Impersonate() { return StatusOf(ImpersonateNamedPipeClient(m_hServer)); }
    static DWORD WaitForServer() { return StatusOf(WaitNamedPipeW(NAME, 50)); }
    DWORD SetMode(DWORD dwMode)
    {
        return StatusOf(SetNamedPipeHandleState(m_hServer, &dwMode, nullptr, nullptr));
    }

    /// The error, or success when exactly the text has come.
    static DWORD Read(HANDLE hPipe, const std::string& text)
    {
        char szBuffer[64] = {};
        DWORD cbRead = 0;
        if (!ReadFile(hPipe, szBuffer, sizeof(szBuffer), &cbRead, nullptr)) {
            return GetLastError();
        }
        EXPECT_EQ(std::string(szBuffer, cbRead), text);
        return ERROR_SUCCESS;
    }
    static DWORD Write(HANDLE hPipe, const std::string& text)
    {
        DWORD cbWritten = 0;
        return StatusOf(WriteFile(hPipe, text.data(), static_cast<DWORD>(text.size()), &cbWritten, nullptr));
    }
    static DWORD Peek(HANDLE hPipe, DWORD cbExpected)
    {
        DWORD cbAvailable = 4711;
        if (!PeekNamedPipe(hPipe, nullptr, 0, nullptr, &cbAvailable, nullptr)) {
            return GetLastError();
        }
        EXPECT_EQ(cbAvailable, cbExpected);
        return ERROR_SUCCESS;
    }
    static bool Impersonates()
    {
        HANDLE hToken = nullptr;
        const bool bOpened = OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &hToken);
        EXPECT_TRUE(bOpened || GetLastError() == ERROR_NO_TOKEN);
        return bOpened && CloseHandle(hToken);
    }

    struct CStep
    {
        const char* szWhat;
        std::function<DWORD()> call;
        DWORD dwExpected;
    };
    static void Run(const std::vector<CStep>& steps)
    {
        for (const CStep& step : steps) {
            const DWORD dwStatus = step.call();
            if (step.dwExpected == SOME_ERROR) {
                EXPECT_NE(dwStatus, DWORD(ERROR_SUCCESS)) << step.szWhat;
            } else {
                EXPECT_EQ(dwStatus, step.dwExpected) << step.szWhat;
            }
        }
    }

    HANDLE m_hServer = INVALID_HANDLE_VALUE;
    HANDLE m_hClient = INVALID_HANDLE_VALUE;
};

TEST_F(Pipes, ServeOneClientAtATime)
{
    HANDLE hOther = nullptr;
    Run({
        {"the name is taken", [&] { return Create(hOther); }, ERROR_PIPE_BUSY},
        {"a new instance listens", [&] { return Connect(); }, ERROR_PIPE_LISTENING},
        {"a client waits for it", [&] { return WaitForServer(); }, ERROR_SUCCESS},
        {"nothing to peek at yet", [&] { return Peek(m_hServer, 0); }, SOME_ERROR},
        {"a client connects", [&] { return Open(); }, ERROR_SUCCESS},
        {"a second one does not", [&] { return OpenAnother(); }, ERROR_PIPE_BUSY},
        {"nor waits for ever", [&] { return WaitForServer(); }, ERROR_SEM_TIMEOUT},
        {"the server sees the first", [&] { return Connect(); }, ERROR_PIPE_CONNECTED},
        {"which has said nothing", [&] { return Peek(m_hServer, 0); }, ERROR_SUCCESS},
        {"and is not waited for", [&] { return Read(m_hServer, ""); }, ERROR_NO_DATA},
        {"it asks", [&] { return Write(m_hClient, "abc"); }, ERROR_SUCCESS},
        {"the server is told", [&] { return Peek(m_hServer, 3); }, ERROR_SUCCESS},
        {"waits from now on", [&] { return SetMode(PIPE_READMODE_BYTE | PIPE_WAIT); }, ERROR_SUCCESS},
        {"and reads what there is", [&] { return Read(m_hServer, "abc"); }, ERROR_SUCCESS},
        {"it answers", [&] { return Write(m_hServer, "de"); }, ERROR_SUCCESS},
        {"the client is told", [&] { return Peek(m_hClient, 2); }, ERROR_SUCCESS},
        {"and reads", [&] { return Read(m_hClient, "de"); }, ERROR_SUCCESS},
        {"nothing is left to flush", [&] { return Flush(); }, ERROR_SUCCESS},
        {"the server ends it", [&] { return Disconnect(); }, ERROR_SUCCESS},
        {"the client notices", [&] { return Read(m_hClient, ""); }, SOME_ERROR},
        {"also when it writes", [&] { return Write(m_hClient, "f"); }, SOME_ERROR},
        {"the instance is not to be had", [&] { return OpenAnother(); }, ERROR_PIPE_BUSY},
        {"there is nobody to read from", [&] { return Read(m_hServer, ""); }, ERROR_PIPE_NOT_CONNECTED},
        {"back to polling", [&] { return SetMode(NOWAIT); }, ERROR_SUCCESS},
    });
    Connect(); // Windows reports success here and Wine that it listens; either way it does.
    Run({
        {"it listens again", [&] { return Connect(); }, ERROR_PIPE_LISTENING},
        {"the old client is gone", [&] { return Hangup(); }, ERROR_SUCCESS},
        {"the next one connects", [&] { return Open(); }, ERROR_SUCCESS},
        {"and is seen", [&] { return Connect(); }, ERROR_PIPE_CONNECTED},
    });
}

TEST_F(Pipes, StayTakenByAClientThatHasGone)
{
    Run({
        {"a client connects", [&] { return Open(); }, ERROR_SUCCESS},
        {"says something", [&] { return Write(m_hClient, "abc"); }, ERROR_SUCCESS},
        {"and goes", [&] { return Hangup(); }, ERROR_SUCCESS},
        {"the poll finds nobody", [&] { return Connect(); }, ERROR_NO_DATA},
        {"nor the next one", [&] { return Connect(); }, ERROR_NO_DATA},
        {"what was said is there", [&] { return Peek(m_hServer, 3); }, ERROR_SUCCESS},
        {"and can be read", [&] { return Read(m_hServer, "abc"); }, ERROR_SUCCESS},
        {"then there is no more", [&] { return Read(m_hServer, ""); }, ERROR_BROKEN_PIPE},
        {"nor to peek at", [&] { return Peek(m_hServer, 0); }, ERROR_BROKEN_PIPE},
        {"nobody listens", [&] { return Write(m_hServer, "d"); }, ERROR_NO_DATA},
        {"others still cannot connect", [&] { return OpenAnother(); }, ERROR_PIPE_BUSY},
        {"until it is disconnected", [&] { return Disconnect(); }, ERROR_SUCCESS},
    });
    Connect();
    Run({{"and connected anew", [&] { return Open(); }, ERROR_SUCCESS}});
}

TEST_F(Pipes, GiveTheServerTheIdentityOfItsClient)
{
    EXPECT_FALSE(Impersonates());
    ASSERT_EQ(Open(), DWORD(ERROR_SUCCESS));
    EXPECT_EQ(Connect(), DWORD(ERROR_PIPE_CONNECTED));
    EXPECT_EQ(Write(m_hClient, "a"), DWORD(ERROR_SUCCESS));
    EXPECT_EQ(Read(m_hServer, "a"), DWORD(ERROR_SUCCESS));
    EXPECT_EQ(Impersonate(), DWORD(ERROR_SUCCESS));
    EXPECT_TRUE(Impersonates());
    EXPECT_TRUE(RevertToSelf());
    EXPECT_FALSE(Impersonates());
}

TEST_F(Pipes, RefuseWhatTheClientDidNotAskFor)
{
    Run({
        {"a client that only reads", [&] { return OpenAs(m_hClient, GENERIC_READ); }, ERROR_SUCCESS},
        {"is connected", [&] { return Connect(); }, ERROR_PIPE_CONNECTED},
        {"cannot write", [&] { return Write(m_hClient, "a"); }, ERROR_ACCESS_DENIED},
        {"but be written to", [&] { return Write(m_hServer, "a"); }, ERROR_SUCCESS},
        {"and read", [&] { return Read(m_hClient, "a"); }, ERROR_SUCCESS},
    });
}

TEST_F(Pipes, AreGoneWithTheirServer)
{
    ASSERT_EQ(Open(), DWORD(ERROR_SUCCESS));
    ASSERT_TRUE(CloseHandle(m_hServer));
    Run({
        {"the client notices", [&] { return Read(m_hClient, ""); }, ERROR_BROKEN_PIPE},
        {"nobody has the name", [&] { return OpenAnother(); }, ERROR_FILE_NOT_FOUND},
        {"nor is waited for", [&] { return WaitForServer(); }, ERROR_FILE_NOT_FOUND},
        {"the handle is no handle", [&] { return Connect(); }, ERROR_INVALID_HANDLE},
        {"", [&] { return Disconnect(); }, ERROR_INVALID_HANDLE},
        {"", [&] { return Flush(); }, ERROR_INVALID_HANDLE},
        {"", [&] { return Peek(m_hServer, 0); }, ERROR_INVALID_HANDLE},
        {"", [&] { return SetMode(NOWAIT); }, ERROR_INVALID_HANDLE},
        {"", [&] { return Impersonate(); }, ERROR_INVALID_HANDLE},
        {"the name can be had again", [&] { return Create(m_hServer); }, ERROR_SUCCESS},
    });
}

} // namespace
