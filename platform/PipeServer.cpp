#include "PipeServer.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Call.h"
#include "SystemError.h"

namespace Native {
namespace {

/// Holds the name as long as the descriptor is open. The system closes it when the process dies.
CDescriptor TakeName(const std::string& path)
{
    CDescriptor lock(open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    Require(lock.IsOpen(), FromErrno(errno));
    Require(flock(lock.Get(), LOCK_EX | LOCK_NB) == 0, ERROR_PIPE_BUSY);
    unlink(path.c_str());
    return lock;
}

} // namespace

CPipeServer::CPipeServer(LPCWSTR szName, const std::string& path, bool bWait, bool bOverlapped)
    : CPipeEnd(bWait, true, true), m_name(szName), m_path(path), m_bOverlapped(bOverlapped),
      m_lock(TakeName(path)), m_listener(PipeSocket::Listen(path)), m_stop(eventfd(0, EFD_CLOEXEC))
{
    Require(m_stop.IsOpen(), FromErrno(errno));
    try {
        m_thread = std::thread([this] { AnswerClients(); });
    } catch (const std::system_error&) {
        throw CCallError{ERROR_NOT_ENOUGH_MEMORY};
    }
}

CPipeServer::~CPipeServer()
{
    eventfd_write(m_stop.Get(), 1);
    m_thread.join();
    unlink(m_path.c_str());
}

void CPipeServer::AnswerClients() noexcept
{
    pollfd waiting[] = {{m_listener.Get(), POLLIN, 0}, {m_stop.Get(), POLLIN, 0}};
    while (waiting[1].revents == 0) {
        if (poll(waiting, 2, -1) > 0 && waiting[0].revents != 0) {
            AnswerClient(CDescriptor(accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC)));
        }
    }
}

void CPipeServer::AnswerClient(CDescriptor client) noexcept
{
    using namespace PipeSocket;
    if (!client.IsOpen()) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    const bool bListening = m_state == State::Listening;
    const bool bTold =
        SendByte(client.Get(), static_cast<char>(bListening ? Answer::Listening : Answer::Busy));
    if (bListening && bTold) {
        m_client = std::move(client);
        m_bHasRead = false;
        m_state = State::Connected;
        m_changed.notify_all();
    }
}

void CPipeServer::Connect()
{
    std::unique_lock lock(m_mutex);
    if (m_state == State::Connected) {
        Require(!PipeSocket::IsPeerGone(m_client.Get()), ERROR_NO_DATA);
        throw CCallError{ERROR_PIPE_CONNECTED};
    }
    const bool bWasListening = m_state == State::Listening;
    m_state = State::Listening;
    if (m_bWait) {
        m_changed.wait(lock, [this] { return m_state == State::Connected; });
        return;
    }
    Require(!bWasListening, ERROR_PIPE_LISTENING);
}

void CPipeServer::Disconnect()
{
    std::unique_lock noFlush(m_flushing, std::defer_lock);
    if (!m_bOverlapped) {
        noFlush.lock();
    }
    const std::lock_guard lock(m_mutex);
    m_client.Reset();
    m_state = State::Disconnected;
    ++m_dwDisconnected;
    m_changed.notify_all();
}

void CPipeServer::Flush()
{
    const std::lock_guard flushing(m_flushing);
    std::unique_lock lock(m_mutex);
    const int nSocket = RequireClient();
    const DWORD dwDisconnected = m_dwDisconnected;
    while (PipeSocket::HasUnread(nSocket)) {
        // Polled: the system does not tell when this changes.
        m_changed.wait_for(lock, std::chrono::milliseconds(1));
        Require(m_dwDisconnected == dwDisconnected, ERROR_PIPE_NOT_CONNECTED);
    }
}

void CPipeServer::RequireImpersonation()
{
    GetSocket();
    Require(m_bHasRead, ERROR_CANNOT_IMPERSONATE);
}

int CPipeServer::GetSocket()
{
    const std::lock_guard lock(m_mutex);
    return RequireClient();
}

/// With the lock held.
int CPipeServer::RequireClient() const
{
    Require(m_state != State::Listening, ERROR_PIPE_LISTENING);
    Require(m_state != State::Disconnected, ERROR_PIPE_NOT_CONNECTED);
    return m_client.Get();
}

} // namespace Native
