#include "ControlConnection.h"

#include <random>

#include "ControlProtocol.h"
#include "PipeOwner.h"

namespace {

constexpr DWORD PAUSE_MILLISECONDS = 20;
constexpr DWORD LONGEST_PAUSE_MILLISECONDS = 250;

/// How long one who waits for its turn keeps still. The server takes who asks first after a period: whoever
/// has waited longer asks more often, and at random, so that nobody falls into step with it and is always
/// first.
DWORD ChoosePause(std::minstd_rand& random, DWORD dwWaited)
{
    return 1 + static_cast<DWORD>(random()) % (LONGEST_PAUSE_MILLISECONDS * 1000 / (1000 + dwWaited) + 1);
}

struct CErrorStatus
{
    DWORD dwError;
    ControlStatus status;
};

constexpr CErrorStatus STATUSES[] = {
    {ERROR_FILE_NOT_FOUND, ControlStatus::NoServer},     {ERROR_TIMEOUT, ControlStatus::TimedOut},
    {ERROR_ACCESS_DENIED, ControlStatus::AccessDenied},  {ERROR_BROKEN_PIPE, ControlStatus::NoAnswer},
    {ERROR_PIPE_NOT_CONNECTED, ControlStatus::NoAnswer}, {ERROR_NO_DATA, ControlStatus::NoAnswer},
};

} // namespace

CControlConnection::CControlConnection(const CControlWait& wait) noexcept
    : m_Wait(wait), m_dwStart(GetTickCount())
{
}

CControlConnection::~CControlConnection()
{
    if (m_hPipe != INVALID_HANDLE_VALUE) {
        CloseHandle(m_hPipe);
    }
}

ControlStatus CControlConnection::Open(const WCHAR* szPipe) noexcept
{
    // Lets the server impersonate this user. The server is the library in Winlogon, unless somebody else made
    // the pipe.
    constexpr DWORD FLAGS = SECURITY_SQOS_PRESENT | SECURITY_IMPERSONATION;
    std::minstd_rand random(m_dwStart ^ GetCurrentThreadId());
    for (;;) {
        m_hPipe =
            CreateFileW(szPipe, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FLAGS, nullptr);
        if (m_hPipe != INVALID_HANDLE_VALUE) {
            return IsPipeOfTrustedOwner(m_hPipe) ? ControlStatus::Success : ControlStatus::ForeignServer;
        }
        if (GetLastError() != ERROR_PIPE_BUSY) {
            return Fail(GetLastError());
        }
        const ControlStatus status = Pause(ChoosePause(random, GetTickCount() - m_dwStart));
        if (status != ControlStatus::Success) {
            return status;
        }
    }
}

ControlStatus CControlConnection::Send(const void* pData, DWORD cbData) noexcept
{
    // A request fits into the buffer of the pipe, so this does not wait for the server.
    DWORD cbWritten = 0;
    return WriteFile(m_hPipe, pData, cbData, &cbWritten, nullptr) ? ControlStatus::Success
                                                                  : Fail(GetLastError());
}

ControlStatus CControlConnection::Receive(void* pBuffer, DWORD cbBuffer) noexcept
{
    BYTE* pNext = static_cast<BYTE*>(pBuffer);
    while (cbBuffer != 0) {
        const ControlStatus status = AwaitBytes();
        if (status != ControlStatus::Success) {
            return status;
        }
        DWORD cbRead = 0;
        if (!ReadFile(m_hPipe, pNext, cbBuffer, &cbRead, nullptr)) {
            return Fail(GetLastError());
        }
        pNext += cbRead;
        cbBuffer -= cbRead;
    }
    return ControlStatus::Success;
}

/// ReadFile on the pipe cannot be cancelled, so it begins only when there is something to read.
ControlStatus CControlConnection::AwaitBytes() noexcept
{
    for (;;) {
        DWORD cbAvailable = 0;
        if (!PeekNamedPipe(m_hPipe, nullptr, 0, nullptr, &cbAvailable, nullptr)) {
            return Fail(GetLastError());
        }
        if (cbAvailable != 0) {
            return ControlStatus::Success;
        }
        const ControlStatus status = Pause(PAUSE_MILLISECONDS);
        if (status != ControlStatus::Success) {
            return status;
        }
    }
}

ControlStatus CControlConnection::Pause(DWORD dwMilliseconds) noexcept
{
    const DWORD dwWaited = GetTickCount() - m_dwStart;
    if (dwWaited >= m_Wait.dwTimeoutMilliseconds) {
        return Fail(ERROR_TIMEOUT);
    }
    if (m_Wait.progress != nullptr && !m_Wait.progress(dwWaited)) {
        return ControlStatus::Cancelled;
    }
    Sleep(dwMilliseconds);
    return ControlStatus::Success;
}

ControlStatus CControlConnection::Fail(DWORD dwError) noexcept
{
    m_dwError = dwError;
    for (const CErrorStatus& row : STATUSES) {
        if (row.dwError == dwError) {
            return row.status;
        }
    }
    return ControlStatus::SystemError;
}
