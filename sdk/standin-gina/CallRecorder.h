#pragma once

#include <deque>
#include <type_traits>

#include "CriticalSection.h"
#include "Failures.h"

/// For a DLL that stands in for a real one: holds what each of its calls is to do, and records what each
/// received. Record is what the driving program sees of a call, Stored what is kept of it. Any thread may use
/// it at any time.
template <typename Call, typename Record, typename Stored, DWORD CALLS>
class CCallRecorder
{
public:
    using Hook = void(WINAPI*)(void* pContext, const Record* pRecord);

    BOOL SetFailure(Call call, StandinFailure failure, DWORD dwCode)
    {
        if (!CanFail(failure)) {
            return FALSE;
        }
        const CCriticalSection::CLock lock(m_lock);
        Behaviour(call).failure = failure;
        Behaviour(call).dwCode = dwCode;
        return TRUE;
    }
    void SetHook(Call call, Hook pfnHook, void* pContext)
    {
        const CCriticalSection::CLock lock(m_lock);
        Behaviour(call).pfnHook = pfnHook;
        Behaviour(call).pHookContext = pContext;
    }
    void SetResult(Call call, LONG nResult)
    {
        const CCriticalSection::CLock lock(m_lock);
        Behaviour(call).nResult = nResult;
    }
    LONG GetResult(Call call)
    {
        const CCriticalSection::CLock lock(m_lock);
        return Behaviour(call).nResult;
    }
    DWORD GetRecordCount()
    {
        const CCriticalSection::CLock lock(m_lock);
        return static_cast<DWORD>(m_records.size());
    }
    const Record* GetRecord(DWORD dwIndex)
    {
        const CCriticalSection::CLock lock(m_lock);
        return dwIndex < m_records.size() ? &m_records[dwIndex] : nullptr;
    }

    /// Adds a record for a call that has just arrived; it stays where it is until Reset.
    Stored& AddRecord(Call call)
    {
        const CCriticalSection::CLock lock(m_lock);
        Stored& record = m_records.emplace_back();
        record.call = call;
        return record;
    }
    /// Does what a call was told to do inside: runs its hook, then fails.
    void Act(const Record& record)
    {
        CBehaviour behaviour;
        {
            const CCriticalSection::CLock lock(m_lock);
            behaviour = Behaviour(record.call);
        }
        if (behaviour.pfnHook != nullptr) {
            behaviour.pfnHook(behaviour.pHookContext, &record);
        }
        Fail(behaviour.failure, behaviour.dwCode);
    }

protected:
    explicit CCallRecorder(const LONG (&results)[CALLS]) : m_results(results) { Reset(); }

    void Reset()
    {
        const CCriticalSection::CLock lock(m_lock);
        for (DWORD dwCall = 0; dwCall < CALLS; ++dwCall) {
            m_behaviours[dwCall] = {m_results[dwCall], StandinFailure::None, 0, nullptr, nullptr};
        }
        m_records.clear();
    }

    // Never held while a hook runs or a call fails: calls may nest, and one that fails does not come back.
    CCriticalSection m_lock;

private:
    struct CBehaviour
    {
        LONG nResult;
        StandinFailure failure;
        DWORD dwCode;
        Hook pfnHook;
        void* pHookContext;
    };

    CBehaviour& Behaviour(Call call) { return m_behaviours[static_cast<DWORD>(call)]; }

    const LONG (&m_results)[CALLS];
    CBehaviour m_behaviours[CALLS];
    std::deque<Stored> m_records;
};

/// Makes an operation of the DLL's only recorder a function of the interface that the DLL exports.
template <auto& Recorder, auto Operation>
struct Exposed;
template <auto& Recorder, typename Result, typename Owner, typename... Arguments,
          Result (Owner::*Operation)(Arguments...)>
struct Exposed<Recorder, Operation>
{
    static Result WINAPI Call(Arguments... arguments) { return (Recorder.*Operation)(arguments...); }
};

/// An argument as a record has it.
template <typename T>
ULONG_PTR AsValue(T argument)
{
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<ULONG_PTR>(argument);
    } else {
        return static_cast<ULONG_PTR>(argument);
    }
}
