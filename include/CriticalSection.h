#pragma once

#include <windows.h>

/// A lock between the threads of the process, to be held briefly. The thread that holds it may enter it
/// again.
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
        explicit CLock(CCriticalSection& lock) noexcept : m_section(lock.m_section)
        {
            EnterCriticalSection(&m_section);
        }
        ~CLock() { LeaveCriticalSection(&m_section); }
        CLock(const CLock&) = delete;
        CLock& operator=(const CLock&) = delete;

    private:
        CRITICAL_SECTION& m_section;
    };

private:
    CRITICAL_SECTION m_section;
};
