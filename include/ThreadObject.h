#pragma once

#include <atomic>

#include "CriticalSection.h"
#include "GlobalObject.h"
#include "Owned.h"

/// A service thread, and the events through which its owner and its thread function agree on starting and
/// stopping.
///
/// The owner calls StartThread, StopThread, CleanThread and the destructor, never two of them at once. A
/// derived class supplies Thread, which runs on the new thread.
class CThreadObject : public CGlobalObject
{
public:
    /// bAutoDelete: the object deletes itself when its thread function has returned. Once StartThread has
    /// returned true, its creator must not touch it any more. Throws CBadArgException for a null name,
    /// CThreadObjectInitException for any other failure.
    CThreadObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, const WCHAR* szThreadName, bool bAutoDelete);
    CThreadObject(const CThreadObject&) = delete;
    CThreadObject& operator=(const CThreadObject&) = delete;

    /// The thread function. It sets StartEvent first (SignalStart), runs until StopEvent is signalled, and
    /// sets FinishEvent last (SignalFinish), on every way out.
    virtual void Thread() = 0;

    /// Stops a running thread. A derived class whose thread function uses its own members must stop the
    /// thread in its own destructor: they are gone when this one runs.
    virtual ~CThreadObject();

    /// Starts the thread. True also when it runs already. If the thread has ended by itself, a new one is
    /// started. If an earlier StopThread gave up waiting, the thread is told to go on; false when it has
    /// already seen the request to stop and has not finished yet.
    bool StartThread();

    /// Asks the thread function to finish and waits until it has. Window messages of the calling thread are
    /// dispatched meanwhile, so hold no lock that a window procedure or the thread function needs. A thread
    /// that has ended without setting FinishEvent is not waited for.
    ///
    /// False when there is no thread, or when it has not finished within m_dwLongestStop. Then it still runs
    /// (m_bRunning): destroy neither the object nor anything that the thread uses.
    bool StopThread();

    /// Whether a thread has been started, has not ended, and has not been asked to stop.
    bool IsAlive() const noexcept;

    /// Closes the handle of the thread, which must have finished. False when there is no thread.
    bool CleanThread();

    /// Destroys the object, which must be on the heap.
    void DeleteThis();

    /// The procedure that CreateThread is given; pObject is the CThreadObject.
    static DWORD WINAPI ThreadStarter(LPVOID pObject);

    DWORD m_dwThreadId;
    HANDLE m_hThread;
    /// True from StartThread until StopThread has succeeded, even if the thread function has returned by
    /// itself.
    bool m_bRunning;
    COwnedText m_szThreadName;
    HANDLE FinishEvent;
    HANDLE StopEvent;
    HANDLE StartEvent;
    bool m_bAutoDelete;

    /// How long StopThread waits, in milliseconds. A thread that is inside a plugin may stay there, and must
    /// not keep the machine from shutting down.
    DWORD m_dwLongestStop = 10000;

    /// Owners on several threads hold this while one of them starts or stops the thread. The thread function
    /// must not need it.
    CCriticalSection m_OwnersLock;

protected:
    // For thread functions: set the event. A failure is only reported.
    void SignalStart() const noexcept;
    void SignalFinish() const noexcept;

    /// Waits until the thread is to stop; false when the time has passed without that. A failed wait counts
    /// as a request to stop: a thread function that cannot wait would loop without a pause.
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

    /// True while StartThread uses the object. A thread that deletes the object waits for that to end.
    std::atomic<bool> m_bStarting;
    std::atomic<bool> m_bBegun;

    /// True from the moment that StopThread sets StopEvent until the thread's handle is closed.
    bool m_bAskedToStop;
};
