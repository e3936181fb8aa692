#pragma once

#include <memory>

#include "LUMGina.h"
#include "PluginDriver.h"
#include "../gina/Standin.h"
#include "TestMachine.h"

using Lines = std::vector<std::string>;

/// A host with three plugins and a GINA, configured through the registry alone.
class PluginsInHost : public CTestMachine
{
protected:
    PluginsInHost()
    {
        // Winlogon leaves no entry of its table null; only this one is called.
        for (PVOID& pEntry : m_table) {
            pEntry = reinterpret_cast<PVOID>(SetTimeout);
        }
        for (const CPluginDriver& plugin : plugins) {
            plugin->SetCounter(&m_nCounter);
        }
        // What the service threads have to say comes too late for these tests.
        SetDword(OWN_KEY, TEXT("PipeInterval"), 3600);
        SetDword(OWN_KEY, TEXT("MonitorInterval"), 3600);
        SetString(OWN_KEY, TEXT("GinaDLL"), TEXT("standin_gina.dll"));
        SetString(OWN_KEY, TEXT("Plugins"), TEXT("test_plugin_a.dll,test_plugin_b.dll,test_plugin_c.dll"));
    }

    void Load()
    {
        ClearLog();
        host = std::make_unique<CLUMGina>(reinterpret_cast<HINSTANCE>(0x1000));
        DWORD dwVersion = 0;
        EXPECT_TRUE(host->LUMWlxNegotiate(WLX_VERSION_1_4, &dwVersion));
    }
    BOOL Initialize() { return host->LUMWlxInitialize(nullptr, WLX, nullptr, m_table, &m_pContext); }

    Lines Chain() const
    {
        Lines names;
        for (GinaNode* pNode = host->m_pGinaObjectList->m_pHead; pNode != nullptr; pNode = pNode->pNext) {
            names.push_back(Narrow(pNode->m_pItem->GetGinaDLLName()));
        }
        return names;
    }

    static BOOL WINAPI SetTimeout(HANDLE, DWORD) { return TRUE; }

    static inline HANDLE const WLX = reinterpret_cast<HANDLE>(0x2000);
    static inline PVOID const CONTEXT = reinterpret_cast<PVOID>(0x3000);
    static constexpr const char* FAILED = "[WARNING] The requested operation failed or it was cancelled";

    PVOID m_table[sizeof(WLX_DISPATCH_VERSION_1_4) / sizeof(PVOID)];
    PVOID m_pContext = nullptr;
    LONG m_nCounter = 0;
    CPluginDriver plugins[3] = {CPluginDriver(TEXT("test_plugin_a.dll")),
                                CPluginDriver(TEXT("test_plugin_b.dll")),
                                CPluginDriver(TEXT("test_plugin_c.dll"))};
    CStandin gina{TEXT("standin_gina.dll")};
    std::unique_ptr<CLUMGina> host;
};
