#include "MessageQueue.h"

#include <unordered_map>

#include "Call.h"

using namespace Native;

namespace {

/// By thread identifier. Never destroyed: threads may outlive the end of main.
auto& GetQueues()
{
    static auto& queues = *new std::unordered_map<DWORD, CMessageQueue*>;
    return queues;
}

/// A thread's queue, which goes when the thread ends.
class CThreadQueue
{
public:
    CThreadQueue() : m_dwThreadId(GetCurrentThreadId()) { GetQueues().emplace(m_dwThreadId, &m_queue); }
    ~CThreadQueue()
    {
        const Waits::CLock lock = Waits::Lock();
        GetQueues().erase(m_dwThreadId);
    }
    CMessageQueue& Get() noexcept { return m_queue; }

private:
    DWORD m_dwThreadId;
    CMessageQueue m_queue;
};

} // namespace

CMessageQueue& Native::GetOwnQueue(const Waits::CLock&)
{
    thread_local CThreadQueue queue;
    return queue.Get();
}

BOOL WINAPI PostThreadMessageW(DWORD dwThreadId, UINT nMessage, WPARAM wParam, LPARAM lParam) noexcept
{
    return LastErrorCall(PlatformCall::PostThreadMessageW, nullptr, FALSE, [&] {
        const Waits::CLock lock = Waits::Lock();
        const auto found = GetQueues().find(dwThreadId);
        Require(found != GetQueues().end(), ERROR_INVALID_THREAD_ID);
        found->second->messages.push_back({nullptr, nMessage, wParam, lParam, GetTickCount(), {0, 0}});
        found->second->bNewInput = true;
        Waits::WakeAll();
        return TRUE;
    });
}

BOOL WINAPI PeekMessageW(LPMSG pMessage, HWND, UINT, UINT, UINT nRemove) noexcept
{
    try {
        const Waits::CLock lock = Waits::Lock();
        CMessageQueue& queue = GetOwnQueue(lock);
        queue.bNewInput = false;
        if (queue.messages.empty()) {
            return FALSE;
        }
        *pMessage = queue.messages.front();
        if ((nRemove & PM_REMOVE) != 0) {
            queue.messages.pop_front();
        }
        return TRUE;
    } catch (const std::bad_alloc&) {
        return FALSE;
    }
}

LRESULT WINAPI DispatchMessageW(const MSG* pMessage)
{
    if (pMessage->message == WM_TIMER && pMessage->lParam != 0) {
        const auto pfnTimer = reinterpret_cast<TIMERPROC>(pMessage->lParam);
        pfnTimer(pMessage->hwnd, WM_TIMER, pMessage->wParam, GetTickCount());
    }
    return 0;
}
