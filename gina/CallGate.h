#pragma once

#include <vector>

#include <windows.h>

#include "CallLocked.h"
#include "guard/FaultGuard.h"

/// The gate of the GINA object list. Calls go through it; changes of the list close it.
///
/// A call may last minutes, so no lock is held while a plugin or GINA runs. Instead the gate counts the calls
/// in flight. A change that could destroy what they use closes the gate to new calls, waits a limited time
/// for those in flight to end, and gives up if they do not. A call made from within another call of the same
/// thread always passes: the outer one cannot end before it.
///
/// A separate lock guards the links and the cursor of the list. It is held briefly, and never while a DLL
/// runs.
///
/// Any thread may use a gate.
class CCallGate
{
public:
    CCallGate() = default;
    CCallGate(const CCallGate&) = delete;
    CCallGate& operator=(const CCallGate&) = delete;

    /// A call in flight, for the length of a scope. While the gate is closed it waits first, but at most
    /// CHANGE_MILLISECONDS. Then it opens the gate itself: a plugin that is being told to go may never
    /// return.
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

    /// Runs body() as a call in flight and returns its result. A fault of the host in body() runs no
    /// destructors, so it is caught inside: the call ends, and the fault is thrown as CForeignFault.
    template <typename Body>
    auto Call(Body body)
    {
        const CCall call(*this);
        return CallWithinHost(body);
    }

    /// The gate closed, for the length of a scope. Calls of the thread that has closed it still pass.
    class CClosing
    {
    public:
        /// Waits at most dwMilliseconds for the calls in flight to end. If one of them is of this thread, it
        /// cannot end meanwhile, and there is no wait.
        CClosing(CCallGate& gate, DWORD dwMilliseconds) : m_gate(gate), m_bClosed(gate.Close(dwMilliseconds))
        {
        }
        ~CClosing();
        CClosing(const CClosing&) = delete;
        CClosing& operator=(const CClosing&) = delete;

        /// False when the calls in flight did not end, or another change has closed the gate.
        bool IsClosed() const noexcept { return m_bClosed; }

        /// Closes the gate again if the call of another thread has opened it. False as for IsClosed.
        bool Renew(DWORD dwMilliseconds) noexcept;

    private:
        CCallGate& m_gate;
        bool m_bClosed;
    };

    /// Runs body(), which reads the list or moves its cursor, with the list locked, and returns its result. A
    /// plugin can overwrite the nodes and what is in them, so body() may fault: the lock is released then,
    /// and the fault is thrown as CForeignFault.
    template <typename Body>
    auto Look(Body body)
    {
        return CallLocked(m_listLock, body);
    }

    /// Changes the part of the list that calls in flight may be using. With the gate closed it runs
    /// allowed(), prepare() and change(). The list is locked for the first and the last, but not for
    /// prepare(), in which a DLL may run. While calls are in flight, allowed() is also asked before the wait
    /// for them, so that nobody waits for a change that is refused anyway.
    ///
    /// False when allowed() or change() is false. False, which is reported, when the calls in flight do not
    /// end: at once when one of them is of this thread.
    template <typename Allowed, typename Prepare, typename Body>
    bool Change(Allowed allowed, Prepare prepare, Body change)
    {
        CClosing closing(*this, 0);
        if (!closing.IsClosed() && !Look(allowed)) {
            return false;
        }
        if (!RenewOrReport(closing) || !Look(allowed)) {
            return false;
        }
        prepare();
        bool bClosed = false;
        bool bChanged = false;
        while (!bClosed) {
            if (!RenewOrReport(closing)) {
                return false;
            }
            // A call that opens the gate after this has to wait for the list.
            Look([&] {
                bClosed = IsClosedByThisThread();
                bChanged = bClosed && change();
            });
        }
        return bChanged;
    }

    /// The same for a change that no DLL is told of.
    template <typename Allowed, typename Body>
    bool Change(Allowed allowed, Body change)
    {
        return Change(
            allowed, [] {}, change);
    }

    /// Runs addition(), which adds a node, with the list locked. A call in flight goes through the new node
    /// or misses it: the node is complete before the one link that leads to it is written.
    ///
    /// A plugin should read that link once for each call, with NextNode of the plugin header. One that reads
    /// it twice loses a call when a node is added in between. For its sake the addition waits a short time
    /// for a moment without calls. It is made in any case.
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

    /// Counts a call that waits for the gate to open, for the length of a scope.
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
    static bool RenewOrReport(CClosing& closing) noexcept;

    CCriticalSection m_listLock;
    /// Guards what follows.
    CCriticalSection m_lock;
    std::vector<CThreadCalls> m_calls;
    /// How many calls wait for the gate to open. The next change lets them go first.
    DWORD m_dwWaiting = 0;
    /// The identifier of the thread that has closed the gate; 0 while it is open.
    DWORD m_dwClosedBy = 0;
};
