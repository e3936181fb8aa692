#include "CallGate.h"

#include <algorithm>

namespace {

// Changes are rare and short, so that waiting for one, or for calls to end, need not be woken up.
constexpr DWORD POLL_MILLISECONDS = 5;

} // namespace

CCallGate::CClosing::~CClosing()
{
    if (m_bClosed) {
        m_gate.Open();
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
    if (m_bClosed) {
        return false;
    }
    m_calls.push_back({dwThreadId, 1});
    return true;
}

void CCallGate::Enter()
{
    while (!TryEnter()) {
        Sleep(POLL_MILLISECONDS);
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

bool CCallGate::Close(DWORD dwMilliseconds) noexcept
{
    {
        const CCriticalSection::CLock lock(m_lock);
        if (m_bClosed) {
            return false;
        }
        m_bClosed = true;
    }
    const DWORD dwStart = GetTickCount();
    while (!IsIdle()) {
        if (GetTickCount() - dwStart >= dwMilliseconds) {
            Open();
            return false;
        }
        Sleep(POLL_MILLISECONDS);
    }
    return true;
}

void CCallGate::Open() noexcept
{
    const CCriticalSection::CLock lock(m_lock);
    m_bClosed = false;
}
