#include "PipeService.h"

#include "Operation.h"
#include "guard/FaultGuard.h"

namespace {

constexpr WCHAR TXT_NO_CLIENT[] = TEXT("Could not connect to pipe, error 0x%x");
constexpr WCHAR TXT_CONNECTED[] = TEXT("Client has connected to LUM GINA Pipe");
constexpr WCHAR TXT_DISCONNECTED[] = TEXT("Client has disconnected from LUM GINA Pipe");

using CNoClientTrace = CTraceStatement<LEVEL_DEBUG, TXT_NO_CLIENT, DWORD>;

} // namespace

CPipeService::CPipeService(const CMessageOrigin& origin, HANDLE hPipe, const CControlTargets& targets,
                           const CPipeConnection::AwaitStop& awaitStop,
                           const CPipeDeadlines& deadlines) noexcept
    : m_Origin(origin), m_hPipe(hPipe), m_Targets(targets), m_awaitStop(awaitStop), m_Deadlines(deadlines)
{
}

void CPipeService::Poll()
{
    const DWORD dwStatus = AskPipe();
    if (dwStatus == ERROR_PIPE_CONNECTED) {
        ServeClient();
        return;
    }
    CNoClientTrace(m_Origin, dwStatus);
    if (dwStatus == ERROR_NO_DATA) {
        // The client has gone. Until it is disconnected, no other can connect.
        DisconnectNamedPipe(m_hPipe);
        Listen();
    }
}

/// Never calls ConnectNamedPipe in blocking mode, where it would wait for a client.
DWORD CPipeService::AskPipe() noexcept
{
    if ((m_bBlocking && !SetBlocking(false)) || !ConnectNamedPipe(m_hPipe, nullptr)) {
        return GetLastError();
    }
    return ERROR_PIPE_LISTENING;
}

void CPipeService::ServeClient()
{
    CTextNotification(m_Origin, TXT_CONNECTED);
    SetBlocking(true);
    CPipeConnection connection(m_Origin, m_hPipe, m_awaitStop, m_Deadlines);
    ServeOneRequest(connection);
    connection.Close();
    SetBlocking(false);
    connection.Revert();
    Listen();
    CTextNotification(m_Origin, TXT_DISCONNECTED);
}

void CPipeService::ServeOneRequest(CPipeConnection& connection) noexcept
{
    try {
        // After a fault the client must still be disconnected and the impersonation ended.
        CallWithinHost([&] { ServeRequest(connection, m_Targets); });
    } catch (...) {
        if (!ReportIf<CMessage>()) {
            CWarning(m_Origin, ERR_UNHANDLED_EXCEPTION);
        }
    }
}

/// A disconnected instance takes no client until ConnectNamedPipe is called. Called only at the next poll,
/// the service would take two periods for each client.
void CPipeService::Listen() noexcept
{
    if (!m_bBlocking) {
        ConnectNamedPipe(m_hPipe, nullptr);
    }
}

bool CPipeService::SetBlocking(bool bBlocking) noexcept
{
    DWORD dwMode = PIPE_READMODE_BYTE | (bBlocking ? PIPE_WAIT : PIPE_NOWAIT);
    const bool bSet = SetNamedPipeHandleState(m_hPipe, &dwMode, nullptr, nullptr) != FALSE;
    m_bBlocking = bSet ? bBlocking : m_bBlocking;
    return bSet;
}
