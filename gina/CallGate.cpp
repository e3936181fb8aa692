#include "CallGate.h"

#include <algorithm>

#include "TraceStatements.h"

namespace {

constexpr WCHAR TXT_BUSY[] = TEXT("Calls are under way. The GINA object list was not changed");

/// Waits by polling. Changes are rare and mostly take microseconds, so nobody needs to be woken up.
class CPolling
{
public:
    void Pause() noexcept
    {
        Sleep(m_nPauses < QUICK_PAUSES ? 0 : POLL_MILLISECONDS);
        ++m_nPauses;
    }

    /// Pauses while condition() is true, until dwMilliseconds have passed since dwStart: false then.
    template <typename Condition>
    bool PauseWhile(Condition condition, DWORD dwStart, DWORD dwMilliseconds)
    {
        while (condition()) {
            if (GetTickCount() - dwStart >= dwMilliseconds) {
                return false;
            }
            Pause();
        }
        return true;
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
        m_gate.OpenOwn();
    }
}

bool CCallGate::CClosing::Renew(DWORD dwMilliseconds) noexcept
{
    m_bClosed = (m_bClosed && m_gate.IsClosedByThisThread()) || m_gate.Close(dwMilliseconds);
    return m_bClosed;
}

std::vector<CCallGate::CThreadCalls>::iterator CCallGate::FindThread(DWORD dwThreadId) noexcept
{
    return std::find_if(m_calls.begin(), m_calls.end(),
                        [=](const CThreadCalls& calls) { return calls.dwThreadId == dwThreadId; });
}

/// When calls nest too deep, the stack may overflow here: the lock must be released then.
bool CCallGate::TryEnter()
{
    return CallLocked(m_lock, [this] {
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
    });
}

void CCallGate::Enter()
{
    if (TryEnter()) {
        return;
    }
    const CWaiting waiting(*this);
    CPolling polling;
    while (!polling.PauseWhile([this] { return !TryEnter(); }, GetTickCount(), CHANGE_MILLISECONDS)) {
        Open();
    }
}

CCallGate::CWaiting::CWaiting(CCallGate& gate) noexcept : m_gate(gate)
{
    const CCriticalSection::CLock lock(m_gate.m_lock);
    ++m_gate.m_dwWaiting;
}

CCallGate::CWaiting::~CWaiting()
{
    const CCriticalSection::CLock lock(m_gate.m_lock);
    --m_gate.m_dwWaiting;
}

void CCallGate::Leave() noexcept
{
    const CCriticalSection::CLock lock(m_lock);
    const auto calls = FindThread(GetCurrentThreadId());
    if (--calls->dwCalls == 0) {
        m_calls.erase(calls);
    }
}

bool CCallGate::IsWaitedFor() noexcept
{
    const CCriticalSection::CLock lock(m_lock);
    return m_dwWaiting != 0 && m_dwClosedBy == 0;
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
    const DWORD dwStart = GetTickCount();
    CPolling polling;
    // Calls that the last change has kept waiting go first: otherwise changes in quick succession would keep
    // them out for good.
    if (!polling.PauseWhile([this] { return IsWaitedFor(); }, dwStart, dwMilliseconds) || !TryClose()) {
        return false;
    }
    if (!polling.PauseWhile([this] { return !IsIdle(); }, dwStart, dwMilliseconds)) {
        OpenOwn();
        return false;
    }
    return true;
}

void CCallGate::Open() noexcept
{
    const CCriticalSection::CLock lock(m_lock);
    m_dwClosedBy = 0;
}

void CCallGate::OpenOwn() noexcept
{
    const CCriticalSection::CLock lock(m_lock);
    if (m_dwClosedBy == GetCurrentThreadId()) {
        m_dwClosedBy = 0;
    }
}

bool CCallGate::IsClosedByThisThread() noexcept
{
    const CCriticalSection::CLock lock(m_lock);
    return m_dwClosedBy == GetCurrentThreadId();
}

bool CCallGate::RenewOrReport(CClosing& closing) noexcept
{
    if (!closing.Renew(CHANGE_MILLISECONDS)) {
        CWarning(LUM_GINA_ORIGIN, TXT_BUSY);
    }
    return closing.IsClosed();
}
