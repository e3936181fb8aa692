#include "PipeConnection.h"

#include "Exceptions.h"
#include "TraceStatements.h"

namespace {

constexpr DWORD POLL_MILLISECONDS = 10;

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

/// A read on the pipe cannot be broken off, so it is not begun before there is something to read.
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
    m_bHasWritten = true;
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
    // Disconnecting takes from the client what it has not read. Flushing waits for it without a limit, so it
    // has to have closed its end, by which a client shows that it has its reply.
    if (!m_bHasWritten || AwaitHangUp()) {
        FlushFileBuffers(m_hPipe);
    }
    DisconnectNamedPipe(m_hPipe);
}

/// What the client sends beyond its request is thrown away: while there is any, the pipe does not tell that
/// the client has gone.
bool CPipeConnection::AwaitHangUp() noexcept
{
    m_dwStart = GetTickCount();
    BYTE rest[256];
    DWORD cbAvailable = 0;
    while (PeekNamedPipe(m_hPipe, nullptr, 0, nullptr, &cbAvailable, nullptr) &&
           (cbAvailable == 0 || ReadFile(m_hPipe, rest, sizeof(rest), &cbAvailable, nullptr)))
    {
        if (IsOver(m_Deadlines.dwReplyMilliseconds) || m_awaitStop(POLL_MILLISECONDS)) {
            return false;
        }
    }
    const DWORD dwError = GetLastError();
    return dwError == ERROR_BROKEN_PIPE || dwError == ERROR_PIPE_NOT_CONNECTED;
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
