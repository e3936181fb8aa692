#include "CallLocked.h"
#include "LUMGina.h"
#include "Needed.h"
#include "ResourceObject.h"

// The host's service threads, and what the control channel asks of the host about itself.

namespace {

/// True also when it runs already. A thread that has ended by itself is started anew.
bool Start(CThreadObject& thread)
{
    return CallLocked(thread.m_OwnersLock, [&] { return thread.IsAlive() || thread.StartThread(); });
}

/// True also when there is nothing to stop.
bool Stop(CThreadObject& thread)
{
    return CallLocked(thread.m_OwnersLock, [&] { return !thread.m_bRunning || thread.StopThread(); });
}

} // namespace

void CLUMGina::StartThreads()
{
    Start(Needed(m_pLUMPipeThreadObject));
    Start(Needed(m_pLUMRegMonitorThreadObject));
}

/// In the order in which they are stopped: the control channel first, since a request could start the
/// monitor. Either may be null.
std::array<CThreadObject*, 2> CLUMGina::GetThreads() const noexcept
{
    return {m_pLUMPipeThreadObject, m_pLUMRegMonitorThreadObject};
}

bool CLUMGina::StopThreads()
{
    bool bStopped = true;
    for (CThreadObject* pThread : GetThreads()) {
        bStopped = (pThread == nullptr || Stop(*pThread)) && bStopped;
    }
    return bStopped;
}

void CLUMGina::SuspendThreads() noexcept
{
    for (CThreadObject* pThread : GetThreads()) {
        if (pThread != nullptr && pThread->m_bRunning) {
            SuspendThread(pThread->m_hThread);
        }
    }
}

bool CLUMGina::LUMEnableActiveRegistryMonitoring(bool bEnable) noexcept
{
    const COperation op(LUM_GINA_ORIGIN, s_szClass, TEXT("LUMEnableActiveRegistryMonitoring"));
    return op.Run(Absorb<>(), [&] {
        CThreadObject& thread = Needed(m_pLUMRegMonitorThreadObject);
        return bEnable ? Start(thread) : Stop(thread);
    });
}

bool CLUMGina::LUMGetLUMGinaVersion(DWORD* pdwVersion) noexcept
{
    const COperation op(LUM_GINA_ORIGIN, s_szClass, TEXT("LUMGetLUMGinaVersion"));
    const auto body = [&] {
        CResourceObject resources(LUM_GINA_APP, LUM_GINA_MTM, Needed(m_pGinaContext).GetInstanceHandle(), 0,
                                  0);
        VS_FIXEDFILEINFO* pInfo = nullptr;
        if (!resources.LoadMenu(1, &pInfo)) {
            return false;
        }
        // Clients have always read one number of 32 bits. The major version does not fit into it.
        Needed(pdwVersion) = pInfo->dwFileVersionMS << 16 | pInfo->dwFileVersionLS;
        return true;
    };
    return op.Run(Absorb<>(), body, FailureWarning::Never);
}
