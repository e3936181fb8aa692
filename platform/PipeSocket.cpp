#include "PipeSocket.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "Call.h"
#include "SystemError.h"

namespace Native {

void CDescriptor::Reset(int nDescriptor) noexcept
{
    if (m_nDescriptor >= 0) {
        close(m_nDescriptor);
    }
    m_nDescriptor = nDescriptor;
}

int CDescriptor::Release() noexcept
{
    return std::exchange(m_nDescriptor, -1);
}

namespace PipeSocket {
namespace {

constexpr int BYTE_TIMEOUT = 5000;
constexpr int CLIENTS_IN_QUEUE = 16;

/// The socket address of a path. The structure holds short paths only, so the address goes through an open
/// directory.
class CSocketAddress
{
public:
    explicit CSocketAddress(const std::string& path)
        : m_directory(open(path.substr(0, path.rfind('/')).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC))
    {
        Require(m_directory.IsOpen(), FromErrno(errno));
        const std::string shortPath =
            "/proc/self/fd/" + std::to_string(m_directory.Get()) + path.substr(path.rfind('/'));
        Require(shortPath.size() < sizeof(m_address.sun_path), ERROR_INVALID_NAME);
        m_address.sun_family = AF_UNIX;
        std::memcpy(m_address.sun_path, shortPath.c_str(), shortPath.size() + 1);
    }

    const sockaddr* Get() const noexcept { return reinterpret_cast<const sockaddr*>(&m_address); }

private:
    CDescriptor m_directory;
    sockaddr_un m_address = {};
};

CDescriptor MakeSocket()
{
    CDescriptor result(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    Require(result.IsOpen(), FromErrno(errno));
    return result;
}

/// Repeats a transfer that a signal broke off before it began.
template <typename Transfer>
ssize_t RunTransfer(Transfer transfer)
{
    ssize_t cbMoved = -1;
    do {
        cbMoved = transfer();
    } while (cbMoved < 0 && errno == EINTR);
    return cbMoved;
}

bool IsGone(int nErrno) noexcept
{
    return nErrno == ECONNRESET || nErrno == EPIPE;
}

} // namespace

CDescriptor Listen(const std::string& path)
{
    CDescriptor result = MakeSocket();
    // The mode of the directory keeps others out.
    Require(bind(result.Get(), CSocketAddress(path).Get(), sizeof(sockaddr_un)) == 0 &&
                listen(result.Get(), CLIENTS_IN_QUEUE) == 0,
            FromErrno(errno));
    return result;
}

CDescriptor Connect(const std::string& path)
{
    CDescriptor result = MakeSocket();
    if (connect(result.Get(), CSocketAddress(path).Get(), sizeof(sockaddr_un)) != 0) {
        throw CCallError{errno == ECONNREFUSED ? ERROR_FILE_NOT_FOUND : FromErrno(errno)};
    }
    return result;
}

bool SendByte(int nSocket, char cByte) noexcept
{
    return RunTransfer([&] { return send(nSocket, &cByte, 1, MSG_NOSIGNAL); }) == 1;
}

bool ReceiveByte(int nSocket, char& cByte) noexcept
{
    pollfd waiting = {nSocket, POLLIN, 0};
    return RunTransfer([&] { return poll(&waiting, 1, BYTE_TIMEOUT); }) == 1 &&
           RunTransfer([&] { return recv(nSocket, &cByte, 1, 0); }) == 1;
}

DWORD Read(int nSocket, void* pBuffer, DWORD cbBuffer, bool bWait)
{
    const ssize_t cbRead =
        RunTransfer([&] { return recv(nSocket, pBuffer, cbBuffer, bWait ? 0 : MSG_DONTWAIT); });
    const int nErrno = errno;
    Require(cbRead >= 0 || nErrno != EAGAIN, ERROR_NO_DATA);
    Require(cbRead >= 0 || IsGone(nErrno), FromErrno(nErrno));
    Require(cbRead > 0 || (cbRead == 0 && cbBuffer == 0), ERROR_BROKEN_PIPE);
    return static_cast<DWORD>(cbRead);
}

DWORD Write(int nSocket, const void* pBuffer, DWORD cbBuffer)
{
    DWORD cbDone = 0;
    while (cbDone < cbBuffer) {
        const char* pRest = static_cast<const char*>(pBuffer) + cbDone;
        const ssize_t cbWritten =
            RunTransfer([&] { return send(nSocket, pRest, cbBuffer - cbDone, MSG_NOSIGNAL); });
        Require(cbWritten >= 0, IsGone(errno) ? ERROR_NO_DATA : FromErrno(errno));
        cbDone += static_cast<DWORD>(cbWritten);
    }
    return cbDone;
}

DWORD Peek(int nSocket, void* pBuffer, DWORD cbBuffer)
{
    int nAvailable = 0;
    Require(ioctl(nSocket, FIONREAD, &nAvailable) == 0, FromErrno(errno));
    Require(nAvailable > 0 || !IsPeerGone(nSocket), ERROR_BROKEN_PIPE);
    if (pBuffer != nullptr && cbBuffer != 0 && nAvailable > 0) {
        recv(nSocket, pBuffer, cbBuffer, MSG_PEEK | MSG_DONTWAIT);
    }
    return static_cast<DWORD>(nAvailable);
}

bool HasUnread(int nSocket)
{
    int nUnread = 0;
    Require(ioctl(nSocket, SIOCOUTQ, &nUnread) == 0, FromErrno(errno));
    Require(nUnread == 0 || !IsPeerGone(nSocket), ERROR_BROKEN_PIPE);
    return nUnread != 0;
}

bool IsPeerGone(int nSocket) noexcept
{
    pollfd state = {nSocket, 0, 0};
    return RunTransfer([&] { return poll(&state, 1, 0); }) == 1 && (state.revents & (POLLHUP | POLLERR)) != 0;
}

} // namespace PipeSocket

DWORD CPipeEnd::Read(void* pBuffer, DWORD cbBuffer)
{
    Require(m_bMayRead, ERROR_ACCESS_DENIED);
    const DWORD cbRead = PipeSocket::Read(GetSocket(), pBuffer, cbBuffer, m_bWait);
    m_bHasRead = true;
    return cbRead;
}

DWORD CPipeEnd::Write(const void* pBuffer, DWORD cbBuffer)
{
    Require(m_bMayWrite, ERROR_ACCESS_DENIED);
    return PipeSocket::Write(GetSocket(), pBuffer, cbBuffer);
}

DWORD CPipeEnd::Peek(void* pBuffer, DWORD cbBuffer)
{
    Require(m_bMayRead, ERROR_ACCESS_DENIED);
    return PipeSocket::Peek(GetSocket(), pBuffer, cbBuffer);
}

} // namespace Native
