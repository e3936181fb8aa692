#pragma once

#include <atomic>

#include "CriticalSection.h"
#include "GlobalObject.h"
#include "Owned.h"

/// A service thread, and the events through which its owner and its thread function agree on starting and
/// stopping.
///
/// The owner calls StartThread, StopThread, CleanThread and the destructor, one at a time. A derived class
/// supplies Thread, which runs on the new thread.
class CThreadObject : public CGlobalObject
{
public:
    /// bAutoDelete: the object deletes itself once its thread function has returned; its creator must not
    /// touch it any more once StartThread has given true. Throws CBadArgException for a null name,
    /// CThreadObjectInitException for any other failure.
    CThreadObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, const WCHAR* szThreadName, bool bAutoDelete);
    CThreadObject(const CThreadObject&) = delete;
    CThreadObject& operator=(const CThreadObject&) = delete;

    /// The thread function. It sets StartEvent first (SignalStart), runs until StopEvent is signalled, and
    /// sets FinishEvent last (SignalFinish), on every way out.
    virtual void Thread() = 0;

    /// Stops a running thread. A derived class whose thread function uses members of its own has to do that
    /// in its own destructor.
    virtual ~CThreadObject();

    /// Starts the thread. True also when it is running already. A thread that has ended by itself counts as
    /// absent: a new one is started. After a stop that was given up the thread goes on if it has not heard of
    /// that yet; false when it has and is still about to finish.
    bool StartThread();

    /// Asks the thread function to finish and waits until it has. Window messages of the calling thread are
    /// dispatched meanwhile, so hold no lock that a window procedure or the thread function needs. A thread
    /// that ended without a word is not waited for. False when there is no thread, and when it has not
    /// finished within m_dwLongestStop: it is still running then (m_bRunning), and so neither the object nor
    /// what the thread uses may be destroyed.
    bool StopThread();

    /// Whether there is a thread that has been started, has not ended and is not to end.
    bool IsAlive() const noexcept;

    /// Lets go of the thread without stopping it; it must have finished. False when there is no thread.
    bool CleanThread();

    /// Destroys the object, which must be on the heap.
    void DeleteThis();

    /// The procedure of the platform's thread; pObject is the CThreadObject.
    static DWORD WINAPI ThreadStarter(LPVOID pObject);

    DWORD m_dwThreadId;
    HANDLE m_hThread;
    /// From StartThread until StopThread has succeeded, also when the thread function has returned by itself.
    bool m_bRunning;
    COwnedText m_szThreadName;
    HANDLE FinishEvent;
    HANDLE StopEvent;
    HANDLE StartEvent;
    bool m_bAutoDelete;

    /// How long StopThread waits, in milliseconds. A thread that is inside a plugin may stay there, and must
    /// not keep the machine from shutting down.
    DWORD m_dwLongestStop = 10000;

    /// For owners on several threads: to be held while one of them starts or stops the thread. The thread
    /// function must not need it.
    CCriticalSection m_OwnersLock;

protected:
    // For thread functions: set the event; a failure is written, and the thread goes on.
    void SignalStart() const noexcept;
    void SignalFinish() const noexcept;

    /// Waits until the owner wants the thread to finish; false when the time is over before that. A wait that
    /// fails counts as the wish, since a thread function that cannot wait would run without a pause.
    bool AwaitStop(DWORD dwMilliseconds) const noexcept;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CThreadObject");

    void CopyName(const WCHAR* szThreadName);
    HANDLE MakeEvent() const;
    void CloseEvent(HANDLE& hEvent, const WCHAR* szEvent) noexcept;
    void CloseEvents() noexcept;

    void Launch();
    void AwaitBeginning() const noexcept;
    void DropFinishedThread() noexcept;
    bool TakeStopBack() noexcept;
    bool AwaitFinish() const noexcept;
    bool AwaitFinishOrInput(DWORD dwMilliseconds) const noexcept;
    void CloseThread() noexcept;
    void RunThread();

    /// The thread of an object that deletes itself must not overtake StartThread.
    std::atomic<bool> m_bStarting;
    std::atomic<bool> m_bBegun;

    /// StopThread has set StopEvent, and the thread has not been let go since.
    bool m_bAskedToStop;
};
