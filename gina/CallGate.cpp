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
    explicit CPolling(DWORD dwMilliseconds = INFINITE) noexcept : m_dwMilliseconds(dwMilliseconds) {}

    /// False when the time is up.
    bool Pause() noexcept
    {
        if (GetTickCount() - m_dwStart >= m_dwMilliseconds) {
            return false;
        }
        Sleep(m_nPauses < QUICK_PAUSES ? 0 : POLL_MILLISECONDS);
        ++m_nPauses;
        return true;
    }

private:
    static constexpr DWORD QUICK_PAUSES = 64;
    static constexpr DWORD POLL_MILLISECONDS = 5;

    DWORD m_dwMilliseconds;
    DWORD m_dwStart = GetTickCount();
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

/// bWaiting: whether this call is among those that wait.
bool CCallGate::TryEnter(bool& bWaiting)
{
    const CCriticalSection::CLock lock(m_lock);
    const DWORD dwThreadId = GetCurrentThreadId();
    const auto calls = FindThread(dwThreadId);
    if (calls != m_calls.end()) {
        ++calls->dwCalls;
        return true;
    }
    const bool bMustWait = m_dwClosedBy != 0 && m_dwClosedBy != dwThreadId;
    m_dwWaiting = m_dwWaiting - (bWaiting ? 1 : 0) + (bMustWait ? 1 : 0);
    bWaiting = bMustWait;
    if (bMustWait) {
        return false;
    }
    m_calls.push_back({dwThreadId, 1});
    return true;
}

void CCallGate::Enter()
{
    bool bWaiting = false;
    for (CPolling polling; !TryEnter(bWaiting);) {
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

bool CCallGate::HasWaiting() noexcept
{
    const CCriticalSection::CLock lock(m_lock);
    return m_dwWaiting != 0;
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
    CPolling polling(dwMilliseconds);
    // One change after the other would keep a call out for ever: those that wait for the last one go first.
    while (HasWaiting()) {
        if (!polling.Pause()) {
            return false;
        }
    }
    if (!TryClose()) {
        return false;
    }
    while (!IsIdle()) {
        if (!polling.Pause()) {
            Open();
            return false;
        }
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
