#include "TestPluginState.h"

#include <algorithm>

#include <winwlx.h>

namespace {

constexpr LONG DEFAULT_ANSWERS[] = {
#define PLUGIN_ANSWER(NAME, ANSWER) ANSWER,
    PLUGIN_CALLS(PLUGIN_ANSWER)
#undef PLUGIN_ANSWER
};

} // namespace

CTestPluginState g_TestPlugin;

CTestPluginState::CTestPluginState() : CCallRecorder(DEFAULT_ANSWERS)
{
    Reset();
}

void CTestPluginState::Reset()
{
    const CCriticalSection::CLock lock(m_lock);
    CCallRecorder::Reset();
    SetVersions(0, 0);
    SetCounter(nullptr);
    m_nOwnCounter = 0;
    std::fill_n(m_actions, PLUGIN_CALL_COUNT, PluginAction::PassOn);
}

void CTestPluginState::SetVersions(DWORD dwWlxVersion, DWORD dwLUMVersion)
{
    const CCriticalSection::CLock lock(m_lock);
    m_dwWlxVersion = dwWlxVersion;
    m_dwLUMVersion = dwLUMVersion;
}

void CTestPluginState::SetAction(PluginCall call, PluginAction action, LONG nAnswer)
{
    const CCriticalSection::CLock lock(m_lock);
    m_actions[static_cast<DWORD>(call)] = action;
    SetResult(call, nAnswer);
}

void CTestPluginState::SetCounter(LONG* pnCounter)
{
    const CCriticalSection::CLock lock(m_lock);
    m_pnCounter = pnCounter != nullptr ? pnCounter : &m_nOwnCounter;
}

PluginRecord& CTestPluginState::AddRecord(PluginCall call)
{
    const CCriticalSection::CLock lock(m_lock);
    PluginRecord& record = CCallRecorder::AddRecord(call);
    record.nOrder = ++*m_pnCounter;
    return record;
}

PluginAction CTestPluginState::GetAction(PluginCall call)
{
    const CCriticalSection::CLock lock(m_lock);
    return m_actions[static_cast<DWORD>(call)];
}
