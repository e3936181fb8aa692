#pragma once

#include <atomic>

#include "../sdk/PluginsInHost.h"
#include "ControlClient.h"
#include "ControlProtocol.h"
#include "RawClient.h"
#include "control/PipeService.h"

/// A host in service, whose pipe is polled all the time instead of once a period.
class CPipeMachine : public PluginsInHost
{
protected:
    CPipeMachine();
    ~CPipeMachine() override;

    void StartServer(const CPipeDeadlines& deadlines = {});
    void StopServer();

    /// That a client that behaves is served.
    static void ExpectService(const std::string& after);
    /// Waits for a line of the log, since the server goes on when its client has its reply.
    void ExpectLine(const std::string& line) const;

private:
    static DWORD WINAPI Serve(LPVOID pMachine);

    CPipeDeadlines m_Deadlines;
    std::atomic<bool> m_bStop = false;
    HANDLE m_hServer = nullptr;
};

/// Whether the thread has the identity of somebody else.
bool IsImpersonating();
