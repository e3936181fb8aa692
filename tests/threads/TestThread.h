#pragma once

#include <atomic>
#include <functional>

#include "Message.h"
#include "ThreadObject.h"

/// A thread that runs what a test gives it.
class CTestThread : public CThreadObject
{
public:
    using Body = std::function<void(CTestThread&)>;

    explicit CTestThread(Body body = RunUntilStopped, bool bAutoDelete = false)
        : CThreadObject(LUM_GINA_APP, LUM_GINA_MTM, TEXT("TestThread"), bAutoDelete), m_body(std::move(body))
    {
    }
    ~CTestThread() override
    {
        if (m_bRunning) {
            StopThread();
        }
        m_bGone = true;
    }

    void Thread() override
    {
        ++m_nRuns;
        m_body(*this);
    }

    /// What a thread function is to do.
    static void RunUntilStopped(CTestThread& self)
    {
        self.SignalStart();
        self.AwaitStop(INFINITE);
        self.SignalFinish();
    }

    /// Whether the thread ends within ten seconds.
    bool HasEnded() const { return WaitForSingleObject(m_hThread, 10000) == WAIT_OBJECT_0; }

    using CThreadObject::AwaitStop;
    using CThreadObject::SignalFinish;
    using CThreadObject::SignalStart;

    std::atomic<int> m_nRuns = 0;
    /// Whether an object has been destroyed since this was cleared last.
    static inline std::atomic<bool> m_bGone = false;

private:
    Body m_body;
};
