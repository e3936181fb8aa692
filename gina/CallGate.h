#pragma once

#include <vector>

#include <windows.h>

#include "CallLocked.h"
#include "guard/FaultGuard.h"

/// The gate over the GINA object list: calls go through it, changes close it.
///
/// A call may last minutes, so no lock is held while a plugin or GINA runs. The gate counts the calls in
/// flight instead. A change that would pull the ground from under them closes it to new ones, waits a
/// bounded time for those in flight to end, and gives up when they do not. A call that comes from within
/// a call of the same thread always passes, since the outer one cannot end before it.
///
/// The list itself has a short lock: over its links and its cursor, never while a DLL runs.
///
/// Any thread may use a gate.
class CCallGate
{
public:
    CCallGate() = default;
    CCallGate(const CCallGate&) = delete;
    CCallGate& operator=(const CCallGate&) = delete;

    /// A call in flight for a scope. Waits at the beginning while the gate is closed, CHANGE_MILLISECONDS
    /// at most; then it opens the gate, since a plugin that is being told to go may never come back.
    class CCall
    {
    public:
        explicit CCall(CCallGate& gate) : m_gate(gate) { m_gate.Enter(); }
        ~CCall() { m_gate.Leave(); }
        CCall(const CCall&) = delete;
        CCall& operator=(const CCall&) = delete;

    private:
        CCallGate& m_gate;
    };

    /// Runs body() as a call in flight and gives what it gives. The call has ended also when the host itself
    /// faults in there, which runs no destructors: that is thrown as CForeignFault.
    template <typename Body>
    auto Call(Body body)
    {
        const CCall call(*this);
        return CallWithinHost(body);
    }

    /// The gate closed for a scope. The calls of the thread that has closed it pass.
    class CClosing
    {
    public:
        /// Waits at most dwMilliseconds for the calls in flight; not at all for those of its own thread,
        /// which cannot end before it.
        CClosing(CCallGate& gate, DWORD dwMilliseconds) : m_gate(gate), m_bClosed(gate.Close(dwMilliseconds))
        {
        }
        ~CClosing();
        CClosing(const CClosing&) = delete;
        CClosing& operator=(const CClosing&) = delete;

        /// False when the calls in flight did not end, or another change has the gate.
        bool IsClosed() const noexcept { return m_bClosed; }

        /// Closes the gate unless it still is; the call of another thread may have opened it. False as above.
        bool Renew(DWORD dwMilliseconds) noexcept;

    private:
        CCallGate& m_gate;
        bool m_bClosed;
    };

    /// Looks at the list, or moves its cursor, under its lock: gives what body() gives. A plugin can write to
    /// the nodes, and to what is in them: a fault there leaves the lock and is thrown as CForeignFault.
    template <typename Body>
    auto Look(Body body)
    {
        return CallLocked(m_listLock, body);
    }

    /// Changes the list where calls in flight may stand. With the gate closed, allowed() and change() run
    /// under the lock, and prepare(), in which a DLL may run, between them without it. While there are calls
    /// in flight allowed() is asked before, so that nobody waits for a change that is not to be. False when
    /// it is not allowed, when the calls in flight do not end (which is reported, and at once when one of
    /// them is of this thread), and when change() is false.
    template <typename Allowed, typename Prepare, typename Body>
    bool Change(Allowed allowed, Prepare prepare, Body change)
    {
        CClosing closing(*this, 0);
        if (!closing.IsClosed()) {
            if (!Look(allowed)) {
                return false;
            }
            if (!closing.Renew(CHANGE_MILLISECONDS)) {
                ReportBusy();
                return false;
            }
        }
        if (!Look(allowed)) {
            return false;
        }
        prepare();
        if (!closing.Renew(CHANGE_MILLISECONDS)) {
            ReportBusy();
            return false;
        }
        return Look(change);
    }

    /// The same for a change that no DLL hears of.
    template <typename Allowed, typename Body>
    bool Change(Allowed allowed, Body change)
    {
        return Change(
            allowed, [] {}, change);
    }

    /// Adds to the list under its lock. Calls in flight may pass through the new node or not: it is complete
    /// before the one link that publishes it is written. A plugin is to read that link once for each call,
    /// with the header's NextNode. One built without it may read it twice, and would lose a call that an
    /// addition comes into. So the addition waits a short time for a moment without calls; it is made in any
    /// case.
    template <typename Body>
    auto Add(Body addition)
    {
        const CClosing closing(*this, ADDITION_MILLISECONDS);
        return Look(addition);
    }

    static constexpr DWORD CHANGE_MILLISECONDS = 1000;
    static constexpr DWORD ADDITION_MILLISECONDS = 100;

private:
    struct CThreadCalls
    {
        DWORD dwThreadId;
        DWORD dwCalls;
    };

    /// A call that waits for the gate to open, for a scope.
    class CWaiting
    {
    public:
        explicit CWaiting(CCallGate& gate) noexcept;
        ~CWaiting();
        CWaiting(const CWaiting&) = delete;
        CWaiting& operator=(const CWaiting&) = delete;

    private:
        CCallGate& m_gate;
    };

    void Enter();
    void Leave() noexcept;
    bool Close(DWORD dwMilliseconds) noexcept;
    void Open() noexcept;
    void OpenOwn() noexcept;
    bool IsClosedByThisThread() noexcept;

    bool TryEnter();
    bool TryClose() noexcept;
    bool IsWaitedFor() noexcept;
    bool IsIdle() noexcept;
    std::vector<CThreadCalls>::iterator FindThread(DWORD dwThreadId) noexcept;
    static void ReportBusy() noexcept;

    CCriticalSection m_listLock;
    /// Over what follows.
    CCriticalSection m_lock;
    std::vector<CThreadCalls> m_calls;
    /// How many calls wait for the gate to open; they go before the next change.
    DWORD m_dwWaiting = 0;
    /// Of the thread that has closed the gate; 0 while it is open.
    DWORD m_dwClosedBy = 0;
};
