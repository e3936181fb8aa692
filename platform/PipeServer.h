#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "PipeSocket.h"
#include "Text.h"

namespace Native {

/// The server's end of a pipe with one instance. A thread of its own answers the clients, since on Windows a
/// client connects without the server doing anything.
class CPipeServer : public CPipeEnd
{
public:
    CPipeServer(LPCWSTR szName, const std::string& path, bool bWait, bool bOverlapped);
    ~CPipeServer() override;

    LPCWSTR GetName() const noexcept override { return m_name.c_str(); }

    void Connect();
    /// Ends a Flush of another thread. If this end is not overlapped, waits for that Flush instead, as on
    /// Windows.
    void Disconnect();
    /// Waits until the client has read what was written to it.
    void Flush();
    /// Throws unless something was read from the client.
    void RequireImpersonation();

protected:
    int GetSocket() override;

private:
    enum class State
    {
        Disconnected,
        Listening,
        Connected,
    };

    int RequireClient() const;
    void AnswerClients() noexcept;
    void AnswerClient(CDescriptor client) noexcept;

    const WideText m_name;
    const std::string m_path;
    const bool m_bOverlapped;
    CDescriptor m_lock;
    CDescriptor m_listener;
    CDescriptor m_stop;
    std::thread m_thread;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    State m_state = State::Listening;
    CDescriptor m_client;
    /// How many clients were disconnected so far.
    DWORD m_dwDisconnected = 0;
    /// Comes before the other one.
    std::mutex m_flushing;
};

} // namespace Native
