#include "CallGate.h"

#include <algorithm>

#include "TraceStatements.h"

namespace {

constexpr WCHAR TXT_BUSY[] = TEXT("Calls are under way. The GINA object list was not changed");

/// Waiting for what is a matter of microseconds unless a call lasts: changes are rare, so that nobody need
/// be woken up.
class CPolling
{
public:
    void Pause() noexcept
    {
        Sleep(m_nPauses < QUICK_PAUSES ? 0 : POLL_MILLISECONDS);
        ++m_nPauses;
    }

private:
    static constexpr DWORD QUICK_PAUSES = 64;
    static constexpr DWORD POLL_MILLISECONDS = 5;

    DWORD m_nPauses = 0;
};

} // namespace

CCallGate::CClosing::~CClosing()
{
    if (m_bClosed) {
        m_gate.Open();
    }
}

CCallGate::CThreadDepth::CThreadDepth(CCallGate& gate) noexcept : m_gate(gate), m_dwCalls(0)
{
    const CCriticalSection::CLock lock(m_gate.m_lock);
    const auto calls = m_gate.FindThread(GetCurrentThreadId());
    m_dwCalls = calls != m_gate.m_calls.end() ? calls->dwCalls : 0;
}

void CCallGate::CThreadDepth::Restore() const noexcept
{
    m_gate.m_listLock.Abandon();
    m_gate.m_lock.Abandon();
    const CCriticalSection::CLock lock(m_gate.m_lock);
    const DWORD dwThreadId = GetCurrentThreadId();
    m_gate.m_dwClosedBy = m_gate.m_dwClosedBy == dwThreadId ? 0 : m_gate.m_dwClosedBy;
    const auto calls = m_gate.FindThread(dwThreadId);
    if (calls == m_gate.m_calls.end()) {
        return;
    }
    calls->dwCalls = std::min(calls->dwCalls, m_dwCalls);
    if (calls->dwCalls == 0) {
        m_gate.m_calls.erase(calls);
    }
}

std::vector<CCallGate::CThreadCalls>::iterator CCallGate::FindThread(DWORD dwThreadId) noexcept
{
    return std::find_if(m_calls.begin(), m_calls.end(),
                        [=](const CThreadCalls& calls) { return calls.dwThreadId == dwThreadId; });
}

bool CCallGate::TryEnter()
{
    const CCriticalSection::CLock lock(m_lock);
    const DWORD dwThreadId = GetCurrentThreadId();
    const auto calls = FindThread(dwThreadId);
    if (calls != m_calls.end()) {
        ++calls->dwCalls;
        return true;
    }
    if (m_dwClosedBy != 0 && m_dwClosedBy != dwThreadId) {
        return false;
    }
    m_calls.push_back({dwThreadId, 1});
    return true;
}

void CCallGate::Enter()
{
    for (CPolling polling; !TryEnter();) {
        polling.Pause();
    }
}

void CCallGate::Leave() noexcept
{
    const CCriticalSection::CLock lock(m_lock);
    const auto calls = FindThread(GetCurrentThreadId());
    if (--calls->dwCalls == 0) {
        m_calls.erase(calls);
    }
}

bool CCallGate::IsIdle() noexcept
{
    const CCriticalSection::CLock lock(m_lock);
    return m_calls.empty();
}

bool CCallGate::TryClose() noexcept
{
    const CCriticalSection::CLock lock(m_lock);
    const DWORD dwThreadId = GetCurrentThreadId();
    if (m_dwClosedBy != 0 || FindThread(dwThreadId) != m_calls.end()) {
        return false;
    }
    m_dwClosedBy = dwThreadId;
    return true;
}

bool CCallGate::Close(DWORD dwMilliseconds) noexcept
{
    if (!TryClose()) {
        return false;
    }
    const DWORD dwStart = GetTickCount();
    for (CPolling polling; !IsIdle();) {
        if (GetTickCount() - dwStart >= dwMilliseconds) {
            Open();
            return false;
        }
        polling.Pause();
    }
    return true;
}

void CCallGate::Open() noexcept
{
    const CCriticalSection::CLock lock(m_lock);
    m_dwClosedBy = 0;
}

void CCallGate::ReportBusy() noexcept
{
    CWarning(LUM_GINA_ORIGIN, TXT_BUSY);
}
