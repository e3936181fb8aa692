#pragma once

#include <algorithm>
#include <iterator>
#include <memory>

#include "DllDriver.h"
#include "LUMGina.h"
#include "TestMachine.h"

/// A host over stand-in GINAs, configured through the registry alone. What its service threads have to say
/// comes too late for a test, unless the test sets their periods.
class CHostMachine : public CTestMachine
{
protected:
    CHostMachine()
    {
        // Winlogon leaves no entry of its table null; only this one is called.
        std::fill(std::begin(m_table), std::end(m_table), reinterpret_cast<PVOID>(SetTimeout));
        SetDword(OWN_KEY, TEXT("PipeInterval"), 3600);
        SetDword(OWN_KEY, TEXT("MonitorInterval"), 3600);
        s_dwTimeout = NOT_SET;
    }

    bool Negotiate() { return host->LUMWlxNegotiate(WLX_VERSION_1_4, &m_dwVersion) != FALSE; }
    bool Initialize() { return host->LUMWlxInitialize(nullptr, WLX, nullptr, m_table, &m_pContext) != FALSE; }
    /// A new host that has negotiated.
    void Load()
    {
        host.reset(); // only one has the pipe
        ClearLog();
        host = std::make_unique<CLUMGina>(HOST);
        EXPECT_TRUE(Negotiate());
    }
    /// A host in service, and nothing recorded of how it came there.
    void Start()
    {
        Load();
        EXPECT_TRUE(Initialize());
        msgina->Reset();
        gina->Reset();
        ClearLog();
    }

    bool IsMonitoring() const { return host->m_pLUMRegMonitorThreadObject->m_bRunning; }

    Lines Chain() const
    {
        Lines names;
        for (GinaNode* pNode = host->m_pGinaObjectList->m_pHead; pNode != nullptr; pNode = pNode->pNext) {
            names.push_back(Narrow(pNode->m_pItem->GetGinaDLLName()));
        }
        return names;
    }

    static BOOL WINAPI SetTimeout(HANDLE hWlx, DWORD dwTimeout)
    {
        s_hTold = hWlx;
        s_dwTimeout = dwTimeout;
        return TRUE;
    }

    static inline HINSTANCE const HOST = reinterpret_cast<HINSTANCE>(0x1000);
    static inline HANDLE const WLX = reinterpret_cast<HANDLE>(0x2000);
    static inline PVOID const CONTEXT = reinterpret_cast<PVOID>(0x3000);
    /// What Winlogon was told last.
    static constexpr DWORD NOT_SET = 77;
    static inline DWORD s_dwTimeout;
    static inline HANDLE s_hTold;

    PVOID m_table[sizeof(WLX_DISPATCH_VERSION_1_4) / sizeof(PVOID)];
    DWORD m_dwVersion = 0;
    PVOID m_pContext = nullptr;
    CStandin msgina{TEXT("msgina.dll")};
    CStandin gina{TEXT("standin_gina.dll")};
    std::unique_ptr<CLUMGina> host;
};
