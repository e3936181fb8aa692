#pragma once

#include <functional>

#include "ControlChannel.h"
#include "Message.h"

/// How long a client may take for the whole of its request, and then for reading the reply.
struct CPipeDeadlines
{
    DWORD dwRequestMilliseconds = 5000;
    DWORD dwReplyMilliseconds = 5000;
};

/// A client at the other end of the pipe, from the moment it is connected until it is disconnected.
///
/// No client can hold up the thread: each wait is limited, and ends at once when the thread is to stop.
class CPipeConnection : public CControlChannel
{
public:
    /// Waits, at most that long. True when the thread is to stop, and from then on.
    using AwaitStop = std::function<bool(DWORD dwMilliseconds)>;

    /// The pipe, in blocking mode, and awaitStop must outlive the connection.
    CPipeConnection(const CMessageOrigin& origin, HANDLE hPipe, const AwaitStop& awaitStop,
                    const CPipeDeadlines& deadlines) noexcept;
    CPipeConnection(const CPipeConnection&) = delete;
    CPipeConnection& operator=(const CPipeConnection&) = delete;

    /// Throws CReadFileException: with ERROR_TIMEOUT if the bytes do not come in time, with
    /// ERROR_OPERATION_ABORTED if the thread is to stop.
    void Read(void* pBuffer, DWORD cbBuffer) override;
    void Write(const void* pBuffer, DWORD cbBuffer) override;
    bool Impersonate() noexcept override;

    /// Gives the client time to read what was written, and disconnects it.
    void Close() noexcept;
    /// Ends the impersonation. Throws CRevertToSelfException when it cannot.
    void Revert();

private:
    void AwaitBytes();
    bool IsOver(DWORD dwMilliseconds) const noexcept;

    const CMessageOrigin m_Origin;
    const HANDLE m_hPipe;
    const AwaitStop& m_awaitStop;
    const CPipeDeadlines m_Deadlines;
    DWORD m_dwStart;
    bool m_bImpersonates = false;
};
