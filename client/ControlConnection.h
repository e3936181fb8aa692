#pragma once

#include <functional>

#include <windows.h>

/// How a request ended.
enum class ControlStatus
{
    Success,       ///< the server did it; for a question: yes
    Refused,       ///< the server answered that it failed; for a question: no
    BadName,       ///< a name that the protocol has no room for; nothing was sent
    NoServer,      ///< nobody serves the pipe
    AccessDenied,  ///< the pipe is not for this user
    ForeignServer, ///< the pipe is neither the system's nor an administrator's; nothing was sent
    TimedOut,      ///< the server was busy, or did not answer, all the time allowed
    Cancelled,     ///< the progress function asked to give up
    NoAnswer,      ///< the server disconnected without a reply: it stops, or could not read the request
    BadAnswer,     ///< what came is not a reply of this protocol
    SystemError,   ///< something else failed, see GetSystemError
};

/// How long to wait for the server, and whom to tell meanwhile. The server looks for a client only once a
/// period (5 seconds by default).
struct CControlWait
{
    /// Called a few times a second with the milliseconds waited so far; false gives up.
    using Progress = std::function<bool(DWORD dwWaited)>;

    DWORD dwTimeoutMilliseconds = 15000;
    Progress progress = nullptr;
};

/// A connection for one request. Each operation returns how it ended.
class CControlConnection
{
public:
    /// wait must outlive the connection. Its time begins now.
    explicit CControlConnection(const CControlWait& wait) noexcept;
    ~CControlConnection();
    CControlConnection(const CControlConnection&) = delete;
    CControlConnection& operator=(const CControlConnection&) = delete;

    ControlStatus Open(const WCHAR* szPipe) noexcept;
    ControlStatus Send(const void* pData, DWORD cbData) noexcept;
    /// Fills the buffer.
    ControlStatus Receive(void* pBuffer, DWORD cbBuffer) noexcept;

    /// The Windows error code behind the last status, ERROR_SUCCESS if there was none.
    DWORD GetSystemError() const noexcept { return m_dwError; }

private:
    ControlStatus AwaitBytes() noexcept;
    ControlStatus Pause(DWORD dwMilliseconds) noexcept;
    ControlStatus Fail(DWORD dwError) noexcept;

    const CControlWait& m_Wait;
    const DWORD m_dwStart;
    HANDLE m_hPipe = INVALID_HANDLE_VALUE;
    DWORD m_dwError = ERROR_SUCCESS;
};
