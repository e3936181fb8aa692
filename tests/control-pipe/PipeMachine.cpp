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
    m_Deadlines = deadlines;
    m_bStop = false;
    m_hServer = CreateThread(nullptr, 0, Serve, this, 0, nullptr);
    ASSERT_NE(m_hServer, nullptr);
}

void CPipeMachine::StopServer()
{
    if (m_hServer != nullptr) {
        m_bStop = true;
        EXPECT_EQ(WaitForSingleObject(m_hServer, INFINITE), WAIT_OBJECT_0);
        CloseHandle(m_hServer);
        m_hServer = nullptr;
    }
}

DWORD WINAPI CPipeMachine::Serve(LPVOID pMachine)
{
    CPipeMachine& machine = *static_cast<CPipeMachine*>(pMachine);
    const CPipeConnection::AwaitStop awaitStop = [&](DWORD dwMilliseconds) {
        Sleep(machine.m_bStop ? 0 : dwMilliseconds);
        return machine.m_bStop.load();
    };
    CPipeService service(LUM_GINA_ORIGIN, machine.host->m_pLUMPipeThreadObject->m_hPipe,
                         {*machine.host->m_pLUMObject, *machine.host}, awaitStop, machine.m_Deadlines);
    do {
        service.Poll();
        EXPECT_FALSE(IsImpersonating());
    } while (!awaitStop(1));
    return 0;
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
