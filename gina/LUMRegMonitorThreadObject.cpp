#include "LUMRegMonitorThreadObject.h"

#include "CallLocked.h"
#include "LUMRegistry.h"
#include "Operation.h"
#include "RequireArgument.h"
#include "ServicePeriod.h"
#include "WinlogonRegistry.h"
#include "chaining/RegistryManager.h"

CLUMRegMonitorThreadObject::CLUMRegMonitorThreadObject(CRegistryManager* pRegistryManager,
                                                       CLUMRegistry* pLUMRegistry,
                                                       CWinlogonRegistry* pWinlogonRegistry, bool bAutoDelete)
    : CThreadObject(LUM_GINA_APP, LUM_GINA_MTM, TEXT("LUMRegMonitorThreadObject"), bAutoDelete),
      m_pRegistryManager(pRegistryManager), m_pWinlogonRegistry(pWinlogonRegistry),
      m_pLUMRegistry(pLUMRegistry)
{
    const CConstructionTrace trace(*this, s_szClass);
    RequireArgument(*this, pRegistryManager, TEXT("pRegistryManager"));
    RequireArgument(*this, pLUMRegistry, TEXT("pLUMRegistry"));
    RequireArgument(*this, pWinlogonRegistry, TEXT("pWinlogonRegistry"));
}

CLUMRegMonitorThreadObject::~CLUMRegMonitorThreadObject()
{
    {
        const CDestructionTrace trace(*this, s_szClass);
    }
    // The thread is stopped here: when the base's destructor runs, what the thread function uses is gone.
    if (m_bRunning) {
        StopThread();
    }
    m_pRegistryManager = nullptr;
}

void CLUMRegMonitorThreadObject::Thread()
{
    const COperation op(*this, s_szClass, TEXT("Thread"));
    op.Run(Absorb<>(), [&] {
        SignalStart();
        try {
            CallWithinHost([this] { Watch(); });
        } catch (...) {
            Absorb<>()(op);
        }
        SignalFinish();
    });
}

void CLUMRegMonitorThreadObject::Watch() const
{
    const DWORD dwPeriod =
        GetServicePeriod(*m_pLUMRegistry, &CLUMRegistry::GetRegistryMonitorInterval, false);
    bool bStop = false;
    while (!bStop) {
        bStop = AwaitStop(dwPeriod);
        CompareWithRegistry();
    }
}

void CLUMRegMonitorThreadObject::CompareWithRegistry() const
{
    CallLocked(m_pRegistryManager->m_lock, [this] {
        const CRegistryManager fresh(szAPP, szMTM, m_pLUMRegistry, m_pWinlogonRegistry, true);
        if (*m_pRegistryManager != fresh) {
            m_pRegistryManager->ResyncWithRegistry(fresh);
        }
    });
}
