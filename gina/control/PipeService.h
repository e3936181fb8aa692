#pragma once

#include "ControlRequests.h"
#include "PipeConnection.h"

/// Serves the clients of the pipe, one for each poll.
class CPipeService
{
public:
    /// The handle, in non-blocking mode, the targets and awaitStop must outlive the service.
    CPipeService(const CMessageOrigin& origin, HANDLE hPipe, const CControlTargets& targets,
                 const CPipeConnection::AwaitStop& awaitStop, const CPipeDeadlines& deadlines) noexcept;

    /// Serves the client that is connected, if one is. Whatever goes wrong with it, the next one can connect.
    /// Throws CRevertToSelfException: the thread then still impersonates the client and must not serve
    /// anybody else.
    void Poll();

private:
    DWORD AskPipe() noexcept;
    void ServeClient();
    void ServeOneRequest(CPipeConnection& connection) noexcept;
    void Listen() noexcept;
    bool SetBlocking(bool bBlocking) noexcept;

    const CMessageOrigin m_Origin;
    const HANDLE m_hPipe;
    const CControlTargets m_Targets;
    const CPipeConnection::AwaitStop& m_awaitStop;
    const CPipeDeadlines m_Deadlines;
    bool m_bBlocking = false;
};
