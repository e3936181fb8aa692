#pragma once

#include <memory>

#include "../gina/Standin.h"
#include "LUMGina.h"
#include "TestMachine.h"

/// A host over a stand-in GINA, whose service threads are watched.
class CHostThreads : public CTestMachine
{
protected:
    CHostThreads() : msgina(TEXT("msgina.dll"))
    {
        SetDword(OWN_KEY, TEXT("MonitorInterval"), 3600);
        Load();
    }

    void Load()
    {
        host = std::make_unique<CLUMGina>(reinterpret_cast<HINSTANCE>(0x1000));
        DWORD dwVersion = 0;
        EXPECT_TRUE(host->LUMWlxNegotiate(WLX_VERSION_1_4, &dwVersion));
    }
    bool Initialize()
    {
        PVOID pContext = nullptr;
        return host->LUMWlxInitialize(nullptr, nullptr, nullptr, m_table, &pContext) != FALSE;
    }
    bool IsMonitoring() const { return host->m_pLUMRegMonitorThreadObject->m_bRunning; }

    PVOID m_table[64] = {};
    CStandin msgina;
    std::unique_ptr<CLUMGina> host;
};
