#include "PipeMachine.h"
#include "platform/FaultInjection.h"

namespace {

using ControlProtocol::PIPE_NAME;
constexpr DWORD CHOSEN = 0x4711;

class FailingPipe : public CPipeMachine
{
protected:
    FailingPipe() { SetTraceMask(LEVEL_WARNING | LEVEL_EXCEPTION); }
};

TEST_F(FailingPipe, CostsOneRequest)
{
    const std::string loaded = "\x68" + Counted("test_plugin_a.dll");
    const std::string read = "[EXCEPTION] ReadFile function call failed, Error: 0x4711";
    const std::string write = "[EXCEPTION] WriteFile function call failed, Error: 0x4711";
    const std::string impersonate =
        "[WARNING] ImpersonateNamedPipeClient function call failed, Error: 0x4711";
    const struct
    {
        PlatformCall call;
        DWORD dwUse;
        std::string request;
        const char* szReply;
        std::string line;
    } rows[] = {
        {PlatformCall::ReadFile, 1, loaded, "", read},
        {PlatformCall::ReadFile, 2, loaded, "", read},
        {PlatformCall::ReadFile, 3, loaded, "", read},
        {PlatformCall::PeekNamedPipe, 1, loaded, "", read},
        {PlatformCall::WriteFile, 1, loaded, "", write},
        {PlatformCall::ImpersonateNamedPipeClient, 1, "\x02", "01", impersonate},
        {PlatformCall::SetNamedPipeHandleState, 1, loaded, "00", ""},
        {PlatformCall::SetNamedPipeHandleState, 2, loaded, "00", ""},
    };
    for (const auto& row : rows) {
        ClearLog();
        const CFaultInjection fault(row.call, row.dwUse, CHOSEN, PIPE_NAME);
        StartServer();
        EXPECT_EQ(Exchange(row.request), row.szReply) << row.line << ", use " << row.dwUse;
        if (!row.line.empty()) {
            ExpectLine(row.line);
        }
        ExpectService(row.line);
        // The end of this exchange is not to be taken for the next one.
        StopServer();
        EXPECT_TRUE(fault.HasFired()) << static_cast<int>(row.call);
    }
}

TEST_F(FailingPipe, WithoutTheClientsIdentityNothingIsDoneForIt)
{
    SetTraceMask(LEVEL_ENTRY);
    for (const CRequestExample& example : GetRequestExamples()) {
        SCOPED_TRACE(example.szName);
        const CFaultInjection fault(PlatformCall::ImpersonateNamedPipeClient, 1, CHOSEN, PIPE_NAME);
        const bool bForAnyone = example.bytes[0] == 117 || example.bytes[0] == 119;
        ClearLog();
        StartServer();
        const std::string reply = Exchange(example.bytes);
        StopServer();
        EXPECT_TRUE(fault.HasFired());
        EXPECT_EQ(reply.size(), bForAnyone ? example.reply.size() : 2u);
        EXPECT_EQ(reply == "01", !bForAnyone);
        EXPECT_EQ(Count(std::string("[ENTRY] ") + example.szOperation), example.bytes[0] == 119 ? 1 : 0);
    }
}

TEST_F(FailingPipe, IsPolledAgain)
{
    SetTraceMask(LEVEL_DEBUG);
    const CFaultInjection fault(PlatformCall::ConnectNamedPipe, 1, CHOSEN, PIPE_NAME);
    StartServer();
    ExpectService("a poll that failed");
    StopServer();
    EXPECT_EQ(Count("[DEBUG] Could not connect to pipe, error 0x4711"), 1);
}

TEST_F(FailingPipe, IsNoPipeAtAll)
{
    host.reset();
    ClearLog();
    const CFaultInjection fault(PlatformCall::CreateNamedPipeW, 1, CHOSEN);
    Load();
    EXPECT_EQ(host->m_pLUMPipeThreadObject, nullptr);
    EXPECT_EQ(Count("[EXCEPTION] CreateNamedPipe function call failed, Error: 0x4711"), 1);
    EXPECT_EQ(Count("[EXCEPTION] Unable to instantiate LUMPipeThreadObject object"), 1);
    EXPECT_TRUE(Initialize()) << "logging on goes on";
}

TEST_F(FailingPipe, EndsTheThreadThatCannotGetItsIdentityBack)
{
    CLUMPipeThreadObject& thread = *host->m_pLUMPipeThreadObject;
    SetDword(OWN_KEY, TEXT("PipeInterval"), 1);
    const CFaultInjection fault(PlatformCall::RevertToSelf, 1, CHOSEN);
    ASSERT_TRUE(thread.StartThread());
    EXPECT_EQ(Exchange("\x75"), "00");
    ExpectLine("[EXCEPTION] RevertToSelf call failed, Error: 0x4711");
    EXPECT_TRUE(thread.StopThread());
    EXPECT_EQ(CControlClient().Verify(), ControlStatus::NoServer);
    EXPECT_EQ(Count("[WARNING] An unhandled exception occurred"), 1);
}

TEST_F(FailingPipe, IsClosedAllTheSame)
{
    const struct
    {
        PlatformCall call;
        const char* szLine;
    } rows[] = {
        {PlatformCall::FlushFileBuffers, "[EXCEPTION] FlushFileBuffers function call failed, Error: 0x4711"},
        {PlatformCall::DisconnectNamedPipe,
         "[EXCEPTION] DisconnectNamedPipe function call failed, Error: 0x4711"},
        {PlatformCall::CloseHandle, "[WARNING] Unable to delete variable, Variable: m_hPipe, Error: 0x4711"},
    };
    for (const auto& row : rows) {
        host.reset();
        Load();
        CLUMPipeThreadObject& thread = *host->m_pLUMPipeThreadObject;
        const HANDLE hPipe = thread.m_hPipe;
        ASSERT_TRUE(thread.StartThread());
        const CFaultInjection fault(row.call, 1, CHOSEN, PIPE_NAME);
        EXPECT_TRUE(thread.StopThread());
        EXPECT_EQ(Count(row.szLine), 1) << row.szLine;
        EXPECT_EQ(thread.m_hPipe, INVALID_HANDLE_VALUE);
        CloseHandle(hPipe);
    }
}

} // namespace
