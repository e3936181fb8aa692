#pragma once

#include "CallRecorder.h"
#include "TestPlugin.h"

/// The settings of the test plugin and what it recorded. The only one of the DLL is g_TestPlugin.
class CTestPluginState : public CCallRecorder<PluginCall, PluginRecord, PluginRecord, PLUGIN_CALL_COUNT>
{
public:
    CTestPluginState();

    void Reset();
    void SetVersions(DWORD dwWlxVersion, DWORD dwLUMVersion);
    void SetAction(PluginCall call, PluginAction action, LONG nAnswer);
    void SetCounter(LONG* pnCounter);

    PluginRecord& AddRecord(PluginCall call);
    PluginAction GetAction(PluginCall call);
    DWORD GetWlxVersion() const { return m_dwWlxVersion; }
    DWORD GetLUMVersion() const { return m_dwLUMVersion; }

private:
    DWORD m_dwWlxVersion;
    DWORD m_dwLUMVersion;
    LONG m_nOwnCounter;
    LONG* m_pnCounter;
    PluginAction m_actions[PLUGIN_CALL_COUNT];
};

extern CTestPluginState g_TestPlugin;
