#pragma once

#include <atomic>

#include <windows.h>

/// A lock for short sections between the threads of the process; may be entered again by its owner.
class CCriticalSection
{
public:
    CCriticalSection() noexcept { InitializeCriticalSection(&m_section); }
    ~CCriticalSection() { DeleteCriticalSection(&m_section); }
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;

    /// Holds the lock for a scope.
    class CLock
    {
    public:
        explicit CLock(CCriticalSection& lock) noexcept : m_lock(lock) { m_lock.Enter(); }
        ~CLock() { m_lock.Leave(); }
        CLock(const CLock&) = delete;
        CLock& operator=(const CLock&) = delete;

    private:
        CCriticalSection& m_lock;
    };

    /// Leaves the lock for good if the current thread holds it: a fault has cut off the scopes that would
    /// have done so.
    void Abandon() noexcept
    {
        if (m_dwOwner.load(std::memory_order_relaxed) != GetCurrentThreadId()) {
            return;
        }
        for (DWORD dwDepth = m_dwDepth; dwDepth != 0; --dwDepth) {
            Leave();
        }
    }

private:
    void Enter() noexcept
    {
        EnterCriticalSection(&m_section);
        if (m_dwDepth++ == 0) {
            m_dwOwner.store(GetCurrentThreadId(), std::memory_order_relaxed);
        }
    }

    void Leave() noexcept
    {
        if (--m_dwDepth == 0) {
            m_dwOwner.store(0, std::memory_order_relaxed);
        }
        LeaveCriticalSection(&m_section);
    }

    CRITICAL_SECTION m_section;
    std::atomic<DWORD> m_dwOwner{0};
    DWORD m_dwDepth = 0;
};
