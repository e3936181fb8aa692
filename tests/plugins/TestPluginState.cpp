#include "TestPluginState.h"

#include <iterator>

#include "Failures.h"
#include <winwlx.h>

CTestPluginState g_TestPlugin;

namespace {

constexpr LONG DEFAULT_ANSWERS[] = {
#define PLUGIN_ANSWER(NAME, ANSWER) ANSWER,
    PLUGIN_CALLS(PLUGIN_ANSWER)
#undef PLUGIN_ANSWER
};
static_assert(std::size(DEFAULT_ANSWERS) == PLUGIN_CALL_COUNT);

} // namespace

CTestPluginState::CTestPluginState()
{
    Reset();
}

void CTestPluginState::Reset()
{
    const CCriticalSection::CLock lock(m_lock);
    m_dwWlxVersion = 0;
    m_dwLUMVersion = 0;
    m_nOwnCounter = 0;
    m_pnCounter = &m_nOwnCounter;
    for (DWORD dwCall = 0; dwCall < PLUGIN_CALL_COUNT; ++dwCall) {
        m_behaviours[dwCall] = {
            PluginAction::PassOn, DEFAULT_ANSWERS[dwCall], StandinFailure::None, 0, nullptr, nullptr};
    }
    m_records.clear();
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
    Behaviour(call).action = action;
    Behaviour(call).nAnswer = nAnswer;
}

BOOL CTestPluginState::SetFailure(PluginCall call, StandinFailure failure, DWORD dwCode)
{
    if (!CanFail(failure)) {
        return FALSE;
    }
    const CCriticalSection::CLock lock(m_lock);
    Behaviour(call).failure = failure;
    Behaviour(call).dwCode = dwCode;
    return TRUE;
}

void CTestPluginState::SetHook(PluginCall call, PluginHook pfnHook, void* pContext)
{
    const CCriticalSection::CLock lock(m_lock);
    Behaviour(call).pfnHook = pfnHook;
    Behaviour(call).pHookContext = pContext;
}

void CTestPluginState::SetCounter(LONG* pnCounter)
{
    const CCriticalSection::CLock lock(m_lock);
    m_pnCounter = pnCounter != nullptr ? pnCounter : &m_nOwnCounter;
}

DWORD CTestPluginState::GetRecordCount()
{
    const CCriticalSection::CLock lock(m_lock);
    return static_cast<DWORD>(m_records.size());
}

const PluginRecord* CTestPluginState::GetRecord(DWORD dwIndex)
{
    const CCriticalSection::CLock lock(m_lock);
    return dwIndex < m_records.size() ? &m_records[dwIndex] : nullptr;
}

PluginRecord& CTestPluginState::AddRecord(PluginCall call)
{
    const CCriticalSection::CLock lock(m_lock);
    PluginRecord& record = m_records.emplace_back();
    record.call = call;
    record.nOrder = ++*m_pnCounter;
    return record;
}

CTestPluginState::CBehaviour CTestPluginState::GetBehaviour(PluginCall call)
{
    const CCriticalSection::CLock lock(m_lock);
    return Behaviour(call);
}
