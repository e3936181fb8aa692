#pragma once

#include "ThreadObject.h"

class CLUMRegistry;
class CRegistryManager;
class CWinlogonRegistry;

/// Watches the chain of GINAs in the registry, which other software may change while Winlogon runs. Reads it
/// once a period, and has the host's manager resynchronise with it.
class CLUMRegMonitorThreadObject : public CThreadObject
{
public:
    /// The host's own objects, which are not owned and must outlive this one. Throws CBadArgException for a
    /// null one, CThreadObjectInitException.
    CLUMRegMonitorThreadObject(CRegistryManager* pRegistryManager, CLUMRegistry* pLUMRegistry,
                               CWinlogonRegistry* pWinlogonRegistry, bool bAutoDelete);
    /// Stops a running thread.
    ~CLUMRegMonitorThreadObject() override;

    /// Compares once in each period, and a last time when it is stopped. Holds the host manager's lock from
    /// reading the registry to the end of the resynchronisation, so that no change of the host's own comes
    /// in between.
    void Thread() override;

    CRegistryManager* m_pRegistryManager;
    CWinlogonRegistry* m_pWinlogonRegistry;
    CLUMRegistry* m_pLUMRegistry;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CLUMRegMonitorThreadObject");

    void Watch() const;
    void CompareWithRegistry() const;
};
