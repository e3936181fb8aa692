#include "LUMPipeThreadObject.h"

#include "ControlProtocol.h"
#include "Exceptions.h"
#include "LUMRegistry.h"
#include "Operation.h"
#include "RequireArgument.h"
#include "ServicePeriod.h"
#include "control/PipeService.h"
#include "guard/FaultGuard.h"

namespace {

constexpr WCHAR THREAD_NAME[] = TEXT("LUMPipeThreadObject");

constexpr DWORD BYTE_MODE = PIPE_TYPE_BYTE | PIPE_READMODE_BYTE;
constexpr DWORD BUFFER_SIZE = 4096;
constexpr DWORD DEFAULT_TIMEOUT_MILLISECONDS = 10;

} // namespace

CLUMPipeThreadObject::CLUMPipeThreadObject(CLUMObject* pLUMObject, CLUMGina* pLUMGina,
                                           CLUMRegistry* pLUMRegistry, bool bAutoDelete)
    : CThreadObject(LUM_GINA_APP, LUM_GINA_MTM, THREAD_NAME, bAutoDelete), m_hPipe(INVALID_HANDLE_VALUE),
      m_pLUMObject(pLUMObject), m_pLUMGina(pLUMGina), m_pLUMRegistry(pLUMRegistry), m_bStopping(false)
{
    const CConstructionTrace trace(*this, s_szClass);
    RequireArgument(*this, pLUMObject, TEXT("pLUMObject"));
    RequireArgument(*this, pLUMGina, TEXT("pLUMGina"));
    RequireArgument(*this, pLUMRegistry, TEXT("pLUMRegistry"));
    try {
        CreatePipe();
    } catch (...) {
        if (!ReportIf<CCreateNamedPipeException>()) {
            CWarning(*this, ERR_UNHANDLED_EXCEPTION);
        }
        throw CLUMPipeThreadObjectInitException(*this);
    }
}

/// One instance, so that requests come one at a time. Overlapped, because DisconnectNamedPipe would otherwise
/// wait for FlushFileBuffers on another thread, which waits for the client.
void CLUMPipeThreadObject::CreatePipe()
{
    m_hPipe = CreateNamedPipeW(
        ControlProtocol::PIPE_NAME, PIPE_ACCESS_DUPLEX | WRITE_OWNER | FILE_FLAG_OVERLAPPED,
        BYTE_MODE | PIPE_NOWAIT, 1, BUFFER_SIZE, BUFFER_SIZE, DEFAULT_TIMEOUT_MILLISECONDS, nullptr);
    if (m_hPipe == INVALID_HANDLE_VALUE) {
        throw CCreateNamedPipeException(*this, GetLastError());
    }
}

CLUMPipeThreadObject::~CLUMPipeThreadObject()
{
    {
        const CDestructionTrace trace(*this, s_szClass);
    }
    // The thread is stopped here: when the base's destructor runs, what the thread function uses is gone.
    if (m_bRunning) {
        StopThread();
    }
    m_pLUMObject = nullptr;
}

void CLUMPipeThreadObject::Thread()
{
    const COperation op(*this, s_szClass, TEXT("Thread"));
    op.Run(Absorb<>(), [&] {
        SignalStart();
        try {
            CallWithinHost([this] { ServeClients(); });
        } catch (...) {
            Absorb<>()(op);
        }
        ReleasePipe();
        SignalFinish();
    });
}

void CLUMPipeThreadObject::ServeClients()
{
    m_bStopping = false;
    const CPipeConnection::AwaitStop awaitStop = [this](DWORD dwMilliseconds) {
        return AwaitStopOnce(dwMilliseconds);
    };
    const DWORD dwPeriod = GetServicePeriod(*m_pLUMRegistry, &CLUMRegistry::GetPipeInterval, true);
    CPipeService service(*this, m_hPipe, {*m_pLUMObject, *m_pLUMGina}, awaitStop, {});
    do {
        service.Poll();
    } while (!AwaitStopOnce(dwPeriod));
}

bool CLUMPipeThreadObject::AwaitStopOnce(DWORD dwMilliseconds) noexcept
{
    m_bStopping = m_bStopping || AwaitStop(dwMilliseconds);
    return m_bStopping;
}

/// At the end there is mostly no client. Flushing and disconnecting then fail, which does no harm.
void CLUMPipeThreadObject::ReleasePipe() noexcept
{
    if (!FlushFileBuffers(m_hPipe)) {
        CFlushFileBuffersException(*this, GetLastError());
    }
    if (!DisconnectNamedPipe(m_hPipe)) {
        CDisconnectNamedPipeException(*this, GetLastError());
    }
    ClosePipe();
}

void CLUMPipeThreadObject::ClosePipe() noexcept
{
    if (m_hPipe != INVALID_HANDLE_VALUE && !CloseHandle(m_hPipe)) {
        CVariableErrorWarning(*this, ERR_DELETE_VARIABLE, TEXT("m_hPipe"), GetLastError());
    }
    m_hPipe = INVALID_HANDLE_VALUE;
}
