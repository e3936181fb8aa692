#include "PipeMachine.h"

#include "Exceptions.h"

CPipeMachine::CPipeMachine()
{
    // Not the first instance, so that it does not start its own threads.
    SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 1);
    Load();
    EXPECT_TRUE(Initialize());
}

CPipeMachine::~CPipeMachine()
{
    StopServer();
}

void CPipeMachine::StartServer(const CPipeDeadlines& deadlines)
{
    m_bStop = false;
    m_pServer = std::make_unique<CThread>([=, this] { Serve(deadlines); });
}

void CPipeMachine::StopServer()
{
    m_bStop = true;
    m_pServer.reset();
}

void CPipeMachine::Serve(const CPipeDeadlines& deadlines)
{
    const CPipeConnection::AwaitStop awaitStop = [this](DWORD dwMilliseconds) {
        Sleep(m_bStop ? 0 : dwMilliseconds);
        return m_bStop.load();
    };
    CPipeService service(LUM_GINA_ORIGIN, host->m_pLUMPipeThreadObject->m_hPipe, {*host->m_pLUMObject, *host},
                         awaitStop, deadlines);
    do {
        service.Poll();
        EXPECT_FALSE(IsImpersonating());
    } while (!awaitStop(1));
}

void CPipeMachine::ExpectService(const std::string& after)
{
    CControlClient client({60000, nullptr});
    EXPECT_EQ(client.Verify(), ControlStatus::Success)
        << "after " << after << ": " << client.GetSystemError();
}

void CPipeMachine::ExpectLine(const std::string& line) const
{
    for (int nTry = 0; nTry < 500 && Count(line) == 0; ++nTry) {
        Sleep(10);
    }
    EXPECT_NE(Count(line), 0) << line << "\nis not in\n" << RawLog();
}

bool IsImpersonating()
{
    HANDLE hToken = nullptr;
    return OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &hToken) && CloseHandle(hToken);
}
