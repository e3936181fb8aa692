#include "EventLog.h"

#include <array>
#include <atomic>
#include <string>

#include "CallLocked.h"
#include "EventSource.h"
#include "GinaNames.h"
#include "KeptKey.h"

namespace {

constexpr std::size_t VALUE_CAPACITY = 1024;
constexpr DWORD CAPACITY = 32;
constexpr DWORD ONE_CAUSE_MILLISECONDS = 60 * 1000;
constexpr DWORD TRY_MILLISECONDS = 2 * 60 * 1000;
constexpr DWORD PAUSE_MILLISECONDS = 500;
constexpr DWORD LONGEST_CLOSE_MILLISECONDS = 2000;
constexpr DWORD POLL_MILLISECONDS = 10;
constexpr DWORD LAST_INSTRUCTIONS_MILLISECONDS = 50;
static_assert((CAPACITY & (CAPACITY - 1)) == 0, "the counters of the ring wrap around");

struct CEvent
{
    bool IsSame(const CEvent& other) const noexcept { return event == other.event && values == other.values; }

    HostEvent event = HostEvent();
    DWORD dwTime = 0;
    /// Each with a terminating zero.
    std::basic_string<WCHAR> values;
};

std::basic_string<WCHAR> Compose(std::initializer_list<CFormatArgument> values)
{
    std::basic_string<WCHAR> texts;
    for (const CFormatArgument& value : values) {
        WCHAR szText[VALUE_CAPACITY];
        const bool bNumber = value.GetKind() == CFormatArgument::Kind::Number;
        FormatText(szText, VALUE_CAPACITY, bNumber ? TEXT("%d") : TEXT("%s"), {value});
        texts.append(szText).append(1, 0);
    }
    return texts;
}

WORD GetType(HostEvent event) noexcept
{
    switch (event) {
#define HOST_EVENT_TYPE(ID, NAME, TYPE, TEXT)                                                                \
    case HostEvent::NAME:                                                                                    \
        return TYPE;
        HOST_EVENTS(HOST_EVENT_TYPE)
#undef HOST_EVENT_TYPE
    }
    return EVENTLOG_INFORMATION_TYPE;
}

/// The last events: those that wait to be written, and before them those that were, so that the same cause is
/// not reported again at once.
class CEventLog
{
public:
    ~CEventLog() { Close(); }

    void Report(HostEvent event, std::initializer_list<CFormatArgument> values)
    {
        if (IsOn()) {
            CEvent report{event, GetTickCount(), Compose(values)};
            CallLocked(m_lock, [&] { Add(report); });
        }
    }

    void Close() noexcept
    {
        m_bClosed = true;
        const HANDLE hWriter = m_hWriter.exchange(nullptr);
        if (hWriter == nullptr) {
            return;
        }
        // While the library is being unloaded, a thread can neither begin nor quite end. One that has nothing
        // more to write is at its last instructions.
        const DWORD dwStart = GetTickCount();
        DWORD dwEnded = WAIT_TIMEOUT;
        while (dwEnded == WAIT_TIMEOUT && m_bWriting && GetTickCount() - dwStart < LONGEST_CLOSE_MILLISECONDS)
        {
            dwEnded = WaitForSingleObject(hWriter, POLL_MILLISECONDS);
        }
        if (m_bWriting) {
            SuspendThread(hWriter);
        } else {
            WaitForSingleObject(hWriter, LAST_INSTRUCTIONS_MILLISECONDS);
        }
        CloseHandle(hWriter);
    }

private:
    bool IsOn() noexcept
    {
        DWORD dwType = REG_NONE;
        DWORD dwOn = 0;
        DWORD cbOn = sizeof(dwOn);
        return g_OwnKey.Query(EVENT_LOG_VALUE, &dwOn, &cbOn, &dwType) && dwType == REG_DWORD &&
               cbOn == sizeof(dwOn) && dwOn != 0;
    }

    void Add(CEvent& report)
    {
        if (m_bClosed || IsRepeated(report)) {
            return;
        }
        if (m_dwAdded - m_dwWritten != CAPACITY) {
            std::swap(m_events[m_dwAdded % CAPACITY], report);
            ++m_dwAdded;
        }
        if (!m_bWriting) {
            StartWriter();
        }
    }

    bool IsRepeated(const CEvent& report) const noexcept
    {
        for (const CEvent& event : m_events) {
            if (event.IsSame(report) && report.dwTime - event.dwTime < ONE_CAUSE_MILLISECONDS) {
                return true;
            }
        }
        return false;
    }

    void StartWriter() noexcept
    {
        m_bWriting = true;
        DWORD dwThreadId = 0;
        const HANDLE hWriter = CreateThread(nullptr, 0, RunWriter, this, 0, &dwThreadId);
        if (hWriter == nullptr) {
            m_bWriting = false;
            m_dwWritten = m_dwAdded;
        }
        const HANDLE hEnded = m_hWriter.exchange(hWriter);
        if (hEnded != nullptr) {
            CloseHandle(hEnded);
        }
    }

    static DWORD WINAPI RunWriter(LPVOID pLog) noexcept
    {
        auto& log = *static_cast<CEventLog*>(pLog);
        try {
            CallWithinHost([&] { log.WriteAll(); });
        } catch (...) {
            log.m_bWriting = false;
        }
        return 0;
    }

    void WriteAll()
    {
        CEvent event;
        while (CallLocked(m_lock, [&] { return TakeNext(event); })) {
            if (!Write(event)) {
                CallLocked(m_lock, [this] { m_dwWritten = m_dwAdded; });
            }
        }
    }

    bool TakeNext(CEvent& event)
    {
        if (m_bClosed || m_dwWritten == m_dwAdded) {
            m_bWriting = false;
            return false;
        }
        event = m_events[m_dwWritten % CAPACITY];
        ++m_dwWritten;
        return true;
    }

    bool Write(const CEvent& event)
    {
        const DWORD dwStart = GetTickCount();
        while (!m_bClosed && GetTickCount() - dwStart < TRY_MILLISECONDS) {
            if (WriteToEventLog(static_cast<DWORD>(event.event), GetType(event.event), event.values)) {
                return true;
            }
            Sleep(PAUSE_MILLISECONDS);
        }
        return false;
    }

    std::atomic<bool> m_bClosed = false;
    std::atomic<bool> m_bWriting = false;
    std::atomic<HANDLE> m_hWriter = nullptr;
    CCriticalSection m_lock;
    /// The lock guards these. An event stands at its number, modulo the capacity.
    std::array<CEvent, CAPACITY> m_events;
    DWORD m_dwAdded = 0;
    DWORD m_dwWritten = 0;
};

CEventLog s_EventLog;

} // namespace

void ReportHostEvent(HostEvent event, std::initializer_list<CFormatArgument> values) noexcept
{
    try {
        s_EventLog.Report(event, values);
    } catch (...) {
        return;
    }
}

void CloseEventLog() noexcept
{
    s_EventLog.Close();
}
