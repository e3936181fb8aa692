#pragma once

#include <atomic>

#include "../sdk/PluginsInHost.h"
#include "ControlClient.h"
#include "ControlProtocol.h"
#include "RawClient.h"
#include "Thread.h"
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
    void Serve(const CPipeDeadlines& deadlines);

    std::atomic<bool> m_bStop = false;
    std::unique_ptr<CThread> m_pServer;
};

/// Whether the thread has the identity of somebody else.
bool IsImpersonating();
