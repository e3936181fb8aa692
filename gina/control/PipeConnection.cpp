#include "PipeConnection.h"

#include "Exceptions.h"
#include "TraceStatements.h"

namespace {

constexpr DWORD POLL_MILLISECONDS = 10;
constexpr DWORD LAST_WAIT_MILLISECONDS = 1000;

/// Finds out when the client has read all that was written. Only FlushFileBuffers tells, and it waits for the
/// client without limit. So it runs on a thread of its own, and DisconnectNamedPipe ends it.
class CPipeFlush
{
public:
    explicit CPipeFlush(HANDLE hPipe) noexcept
        : m_hThread(CreateThread(nullptr, 0, GetThreadProcedure(), hPipe, 0, nullptr))
    {
    }
    /// To be called after DisconnectNamedPipe.
    ~CPipeFlush()
    {
        if (m_hThread != nullptr) {
            WaitForSingleObject(m_hThread, LAST_WAIT_MILLISECONDS);
            CloseHandle(m_hThread);
        }
    }
    CPipeFlush(const CPipeFlush&) = delete;
    CPipeFlush& operator=(const CPipeFlush&) = delete;

    /// Whether the client has read everything or has gone. Never true if the thread could not be made.
    bool HasEnded(DWORD dwMilliseconds) const noexcept
    {
        if (m_hThread == nullptr) {
            Sleep(dwMilliseconds);
            return false;
        }
        return WaitForSingleObject(m_hThread, dwMilliseconds) == WAIT_OBJECT_0;
    }

private:
    /// The thread runs the system's function and no code of this library: it may begin only when the library
    /// is gone.
    static LPTHREAD_START_ROUTINE GetThreadProcedure() noexcept
    {
        return reinterpret_cast<LPTHREAD_START_ROUTINE>(reinterpret_cast<void (*)()>(FlushFileBuffers));
    }

    const HANDLE m_hThread;
};

} // namespace

CPipeConnection::CPipeConnection(const CMessageOrigin& origin, HANDLE hPipe, const AwaitStop& awaitStop,
                                 const CPipeDeadlines& deadlines) noexcept
    : m_Origin(origin), m_hPipe(hPipe), m_awaitStop(awaitStop), m_Deadlines(deadlines),
      m_dwStart(GetTickCount())
{
}

void CPipeConnection::Read(void* pBuffer, DWORD cbBuffer)
{
    BYTE* pNext = static_cast<BYTE*>(pBuffer);
    while (cbBuffer != 0) {
        AwaitBytes();
        DWORD cbRead = 0;
        if (!ReadFile(m_hPipe, pNext, cbBuffer, &cbRead, nullptr)) {
            throw CReadFileException(m_Origin, GetLastError());
        }
        pNext += cbRead;
        cbBuffer -= cbRead;
    }
}

/// ReadFile on the pipe cannot be cancelled, so it begins only when there is something to read.
void CPipeConnection::AwaitBytes()
{
    for (;;) {
        DWORD cbAvailable = 0;
        if (!PeekNamedPipe(m_hPipe, nullptr, 0, nullptr, &cbAvailable, nullptr)) {
            throw CReadFileException(m_Origin, GetLastError());
        }
        if (cbAvailable != 0) {
            return;
        }
        if (IsOver(m_Deadlines.dwRequestMilliseconds)) {
            throw CReadFileException(m_Origin, ERROR_TIMEOUT);
        }
        if (m_awaitStop(POLL_MILLISECONDS)) {
            throw CReadFileException(m_Origin, ERROR_OPERATION_ABORTED);
        }
    }
}

void CPipeConnection::Write(const void* pBuffer, DWORD cbBuffer)
{
    // Replies fit into the buffer of the pipe, so this does not wait for the client.
    DWORD cbWritten = 0;
    if (!WriteFile(m_hPipe, pBuffer, cbBuffer, &cbWritten, nullptr)) {
        throw CWriteFileException(m_Origin, GetLastError());
    }
    if (cbWritten != cbBuffer) {
        throw CWriteFileException(m_Origin, ERROR_WRITE_FAULT);
    }
}

bool CPipeConnection::Impersonate() noexcept
{
    m_bImpersonates = ImpersonateNamedPipeClient(m_hPipe) != FALSE;
    if (!m_bImpersonates) {
        CErrorWarning(m_Origin, ERR_IMPERSONATE_NAMED_PIPE_CLIENT, GetLastError());
    }
    return m_bImpersonates;
}

void CPipeConnection::Close() noexcept
{
    // Disconnecting discards what the client has not read.
    const CPipeFlush flush(m_hPipe);
    m_dwStart = GetTickCount();
    while (!flush.HasEnded(POLL_MILLISECONDS) && !IsOver(m_Deadlines.dwReplyMilliseconds) && !m_awaitStop(0))
    {
    }
    DisconnectNamedPipe(m_hPipe);
}

void CPipeConnection::Revert()
{
    if (m_bImpersonates && !RevertToSelf()) {
        throw CRevertToSelfException(m_Origin, GetLastError());
    }
    m_bImpersonates = false;
}

bool CPipeConnection::IsOver(DWORD dwMilliseconds) const noexcept
{
    return GetTickCount() - m_dwStart >= dwMilliseconds;
}
