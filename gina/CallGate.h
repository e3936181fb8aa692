#pragma once

#include <vector>

#include <windows.h>

#include "CriticalSection.h"

/// The gate over the GINA object list: calls go through it, changes close it.
///
/// A call may last minutes, so no lock is held while a plugin or GINA runs. The gate counts the calls in
/// flight instead. A change that would pull the ground from under them closes it to new ones, waits a
/// bounded time for those in flight to end, and gives up when they do not. A call that comes from within
/// a call of the same thread always passes, since the outer one cannot end before it.
///
/// Any thread may use a gate.
class CCallGate
{
public:
    CCallGate() = default;
    CCallGate(const CCallGate&) = delete;
    CCallGate& operator=(const CCallGate&) = delete;

    /// A call in flight for a scope; waits at the beginning while the gate is closed.
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

    /// The gate closed for a scope.
    class CClosing
    {
    public:
        /// Waits at most dwMilliseconds for the calls in flight, those of its own thread included.
        CClosing(CCallGate& gate, DWORD dwMilliseconds) : m_gate(gate), m_bClosed(gate.Close(dwMilliseconds))
        {
        }
        ~CClosing();
        CClosing(const CClosing&) = delete;
        CClosing& operator=(const CClosing&) = delete;

        /// False when the calls in flight did not end, or another change has the gate: nothing may be
        /// changed.
        bool IsClosed() const noexcept { return m_bClosed; }

    private:
        CCallGate& m_gate;
        bool m_bClosed;
    };

    /// The short lock under which the list is looked into.
    CCriticalSection& GetListLock() noexcept { return m_lock; }

private:
    struct CThreadCalls
    {
        DWORD dwThreadId;
        DWORD dwCalls;
    };

    void Enter();
    void Leave() noexcept;
    bool Close(DWORD dwMilliseconds) noexcept;
    void Open() noexcept;

    bool TryEnter();
    bool IsIdle() noexcept;
    std::vector<CThreadCalls>::iterator FindThread(DWORD dwThreadId) noexcept;

    CCriticalSection m_lock;
    std::vector<CThreadCalls> m_calls;
    bool m_bClosed = false;
};
