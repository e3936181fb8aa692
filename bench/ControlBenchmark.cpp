// A request of the control channel on the wire, from the client's connection until the next client can
// connect.

#include "ControlProtocol.h"
#include "LUMGina.h"
#include "Machine.h"
#include "Stopwatch.h"
#include "Thread.h"
#include "control/PipeService.h"

namespace {

using namespace ControlProtocol;

class CEvent
{
public:
    ~CEvent() { CloseHandle(m_hEvent); }
    void Set() const { SetEvent(m_hEvent); }
    void Wait() const { Require(WaitForSingleObject(m_hEvent, INFINITE) == WAIT_OBJECT_0, "a wait"); }

private:
    const HANDLE m_hEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
};

/// A server on a thread of its own, and its client. Each waits for the other: one that looked again and again
/// would take the only processor from the other, and its time would be the scheduler's.
class CExchange
{
public:
    explicit CExchange(std::function<void()> serve) : m_serve(std::move(serve)) {}
    ~CExchange()
    {
        m_bStop = true;
        m_asked.Set();
    }

    /// Sends a code and reads the reply byte.
    void Ask(BYTE byCode) const
    {
        DWORD cb = 0;
        BYTE byReply = REPLY_FAILURE;
        const HANDLE hPipe =
            CreateFileW(PIPE_NAME, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        Require(WriteFile(hPipe, &byCode, sizeof(byCode), &cb, nullptr) && cb == sizeof(byCode), "a request");
        m_asked.Set();
        Require(ReadFile(hPipe, &byReply, sizeof(byReply), &cb, nullptr) && cb == sizeof(byReply) &&
                    byReply == REPLY_SUCCESS,
                "a reply");
        CloseHandle(hPipe);
        m_served.Wait();
    }

private:
    const std::function<void()> m_serve;
    const CEvent m_asked;
    const CEvent m_served;
    std::atomic<bool> m_bStop = false;
    const CThread m_thread{[this] {
        for (m_asked.Wait(); !m_bStop; m_asked.Wait()) {
            m_serve();
            m_served.Set();
        }
    }};
};

void ControlRequest(benchmark::State& state)
{
    Configure(0, MASK_NOTHING);
    CLUMGina host(reinterpret_cast<HINSTANCE>(&host));
    const CPipeConnection::AwaitStop awaitStop = [](DWORD) { return false; };
    CPipeService service(LUM_GINA_ORIGIN, host.m_pLUMPipeThreadObject->m_hPipe, {*host.m_pLUMObject, host},
                         awaitStop, {});
    const CExchange exchange([&] { service.Poll(); });
    for ([[maybe_unused]] auto step : state) {
        exchange.Ask(LUM_VERIFY_LUM_GINA);
    }
}

/// The same exchange with a server that does nothing but what the pipe takes.
void BareRequest(benchmark::State& state)
{
    const HANDLE hPipe = CreateNamedPipeW(PIPE_NAME, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED, PIPE_NOWAIT,
                                          1, 4096, 4096, 0, nullptr);
    {
        const CExchange exchange([=] {
            BYTE byCode = 0;
            DWORD cb = 0;
            Require(!ConnectNamedPipe(hPipe, nullptr) && GetLastError() == ERROR_PIPE_CONNECTED, "a client");
            Require(ReadFile(hPipe, &byCode, sizeof(byCode), &cb, nullptr) && cb == sizeof(byCode), "a read");
            Require(WriteFile(hPipe, &REPLY_SUCCESS, sizeof(REPLY_SUCCESS), &cb, nullptr), "a write");
            FlushFileBuffers(hPipe);
            Require(DisconnectNamedPipe(hPipe), "a disconnection");
            ConnectNamedPipe(hPipe, nullptr);
        });
        for ([[maybe_unused]] auto step : state) {
            exchange.Ask(LUM_VERIFY_LUM_GINA);
        }
    }
    CloseHandle(hPipe);
}

BENCHMARK(ControlRequest)->UseRealTime();
BENCHMARK(BareRequest)->UseRealTime();

} // namespace
