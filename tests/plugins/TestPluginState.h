#pragma once

#include <deque>

#include "CriticalSection.h"
#include "TestPlugin.h"

/// The settings of the test plugin and what it recorded. The only one of the DLL is g_TestPlugin.
class CTestPluginState
{
public:
    struct CBehaviour
    {
        PluginAction action;
        LONG nAnswer;
        StandinFailure failure;
        DWORD dwCode;
        PluginHook pfnHook;
        void* pHookContext;
    };

    CTestPluginState();

    // The operations of TestPluginInterface.
    void Reset();
    void SetVersions(DWORD dwWlxVersion, DWORD dwLUMVersion);
    void SetAction(PluginCall call, PluginAction action, LONG nAnswer);
    BOOL SetFailure(PluginCall call, StandinFailure failure, DWORD dwCode);
    void SetHook(PluginCall call, PluginHook pfnHook, void* pContext);
    void SetCounter(LONG* pnCounter);
    DWORD GetRecordCount();
    const PluginRecord* GetRecord(DWORD dwIndex);

    /// Adds a record for a call that has just arrived; it stays where it is until Reset.
    PluginRecord& AddRecord(PluginCall call);
    CBehaviour GetBehaviour(PluginCall call);
    DWORD GetWlxVersion() const { return m_dwWlxVersion; }
    DWORD GetLUMVersion() const { return m_dwLUMVersion; }

private:
    CBehaviour& Behaviour(PluginCall call) { return m_behaviours[static_cast<DWORD>(call)]; }

    // Never held while a call does what it was told to: it may not come back.
    CCriticalSection m_lock;
    DWORD m_dwWlxVersion;
    DWORD m_dwLUMVersion;
    LONG m_nOwnCounter;
    LONG* m_pnCounter;
    CBehaviour m_behaviours[PLUGIN_CALL_COUNT];
    std::deque<PluginRecord> m_records;
};

extern CTestPluginState g_TestPlugin;
