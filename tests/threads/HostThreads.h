#pragma once

#include "HostMachine.h"

/// A host whose service threads are watched.
class CHostThreads : public CHostMachine
{
protected:
    CHostThreads() { Load(); }

    bool IsMonitoring() const { return host->m_pLUMRegMonitorThreadObject->m_bRunning; }
};
