#pragma once

#include <atomic>
#include <functional>
#include <utility>

#include <windows.h>

/// A thread that runs a function once, on either target.
class CThread
{
public:
    explicit CThread(std::function<void()> run)
        : m_run(std::move(run)), m_hThread(CreateThread(nullptr, 0, Run, this, 0, &m_dwId))
    {
    }
    ~CThread()
    {
        Join();
        CloseHandle(m_hThread);
    }
    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;

    /// Waits until the function has returned.
    void Join() { WaitForSingleObject(m_hThread, INFINITE); }

private:
    static DWORD WINAPI Run(PVOID pThread)
    {
        static_cast<CThread*>(pThread)->m_run();
        return 0;
    }

    std::function<void()> m_run;
    DWORD m_dwId = 0;
    HANDLE m_hThread;
};

/// Something that happens once and that another thread waits for.
class CHappening
{
public:
    void Happen() { m_bHappened = true; }
    bool HasHappened() const { return m_bHappened; }
    void Wait() const
    {
        while (!m_bHappened) {
            Sleep(1);
        }
    }

private:
    std::atomic<bool> m_bHappened{false};
};
