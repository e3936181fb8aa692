// A request of the control channel on the wire, from the client's connection to the reply. The servers look
// for a client all the time instead of once a period.

#include "ControlProtocol.h"
#include "LUMGina.h"
#include "Machine.h"
#include "Stopwatch.h"
#include "Thread.h"
#include "control/PipeService.h"

namespace {

using namespace ControlProtocol;

/// One client: sends a code and reads the reply byte.
void Ask(BYTE byCode)
{
    HANDLE hPipe = INVALID_HANDLE_VALUE;
    while (hPipe == INVALID_HANDLE_VALUE) {
        Sleep(0);
        hPipe = CreateFileW(PIPE_NAME, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    }
    DWORD cb = 0;
    BYTE byReply = REPLY_FAILURE;
    WriteFile(hPipe, &byCode, sizeof(byCode), &cb, nullptr);
    ReadFile(hPipe, &byReply, sizeof(byReply), &cb, nullptr);
    CloseHandle(hPipe);
}

/// Runs serve() on a thread of its own, again and again.
class CServer
{
public:
    template <typename Serve>
    explicit CServer(Serve serve)
        : m_thread([this, serve] {
              while (!m_bStop) {
                  serve();
                  Sleep(0);
              }
          })
    {
    }
    ~CServer() { m_bStop = true; }
    CServer(const CServer&) = delete;
    CServer& operator=(const CServer&) = delete;

private:
    std::atomic<bool> m_bStop = false;
    CThread m_thread;
};

void ControlRequest(benchmark::State& state)
{
    Configure(0, MASK_NOTHING);
    SetNumber(TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Volatile"), TEXT("InstanceCount"), 1);
    CLUMGina host(reinterpret_cast<HINSTANCE>(&host));
    const CPipeConnection::AwaitStop awaitStop = [](DWORD) {
        Sleep(0);
        return false;
    };
    CPipeService service(LUM_GINA_ORIGIN, host.m_pLUMPipeThreadObject->m_hPipe, {*host.m_pLUMObject, host},
                         awaitStop, {});
    const CServer server([&] { service.Poll(); });
    for ([[maybe_unused]] auto step : state) {
        Ask(LUM_VERIFY_LUM_GINA);
    }
}

/// The same exchange with a server that does nothing but what the pipe takes.
void BareRequest(benchmark::State& state)
{
    const HANDLE hPipe = CreateNamedPipeW(PIPE_NAME, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED, PIPE_NOWAIT,
                                          1, 4096, 4096, 0, nullptr);
    {
        const CServer server([=] {
            if (ConnectNamedPipe(hPipe, nullptr) || GetLastError() != ERROR_PIPE_CONNECTED) {
                return;
            }
            DWORD dwMode = PIPE_WAIT;
            BYTE byCode = 0;
            DWORD cb = 0;
            SetNamedPipeHandleState(hPipe, &dwMode, nullptr, nullptr);
            ReadFile(hPipe, &byCode, sizeof(byCode), &cb, nullptr);
            WriteFile(hPipe, &REPLY_SUCCESS, sizeof(REPLY_SUCCESS), &cb, nullptr);
            FlushFileBuffers(hPipe);
            DisconnectNamedPipe(hPipe);
            dwMode = PIPE_NOWAIT;
            SetNamedPipeHandleState(hPipe, &dwMode, nullptr, nullptr);
            ConnectNamedPipe(hPipe, nullptr);
        });
        for ([[maybe_unused]] auto step : state) {
            Ask(LUM_VERIFY_LUM_GINA);
        }
    }
    CloseHandle(hPipe);
}

BENCHMARK(ControlRequest)->UseRealTime();
BENCHMARK(BareRequest)->UseRealTime();

} // namespace
