#include "ThreadObject.h"

#include <iterator>
#include <new>

#include "Operation.h"
#include "RequireArgument.h"
#include "platform/FaultGuard.h"

namespace {

// A thread that has set its finish event has only its last trace lines to write. It is not waited for longer:
// while the library is being unloaded no thread can end, and that must not keep the process.
constexpr DWORD LAST_LINES_MILLISECONDS = 2000;
constexpr DWORD POLL_MILLISECONDS = 1;

/// A thread's name for trace lines that are written when the object may be gone; cut to fit.
class CNameCopy
{
public:
    explicit CNameCopy(const WCHAR* szName) noexcept
    {
        FormatText(m_szName, std::size(m_szName), TEXT("%s"), {szName});
    }
    operator const WCHAR*() const noexcept { return m_szName; }

private:
    WCHAR m_szName[MAX_PATH];
};

bool IsSignalled(HANDLE hObject, DWORD dwMilliseconds = 0) noexcept
{
    return WaitForSingleObject(hObject, dwMilliseconds) == WAIT_OBJECT_0;
}

void SignalEvent(const CMessageOrigin& origin, HANDLE hEvent)
{
    if (!SetEvent(hEvent)) {
        throw CSetEventException(origin, GetLastError());
    }
}

void ClearEvent(const CMessageOrigin& origin, HANDLE hEvent)
{
    if (!ResetEvent(hEvent)) {
        throw CResetEventException(origin, GetLastError());
    }
}

/// What a thread function does about an event that it cannot set: it has been written.
void TrySignalEvent(const CMessageOrigin& origin, HANDLE hEvent) noexcept
{
    try {
        SignalEvent(origin, hEvent);
    } catch (CSetEventException& exception) {
        exception.WriteIfUnwritten();
    }
}

/// A window procedure is somebody else's code: one that fails must not end the wait for the thread.
void DispatchPendingMessages(const CMessageOrigin& origin) noexcept
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        try {
            GuardedCall([&] { DispatchMessageW(&message); });
        } catch (...) {
            CWarning(origin, ERR_UNHANDLED_EXCEPTION);
        }
    }
}

} // namespace

CThreadObject::CThreadObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, const WCHAR* szThreadName,
                             bool bAutoDelete)
    : CGlobalObject(szAPPArg, szMTMArg), m_dwThreadId(0), m_hThread(nullptr), m_bRunning(false),
      FinishEvent(nullptr), StopEvent(nullptr), StartEvent(nullptr), m_bAutoDelete(bAutoDelete),
      m_bStarting(false)
{
    const CConstructionTrace trace(*this, s_szClass);
    RequireArgument(*this, szThreadName, TEXT("szThreadName"));
    try {
        CopyName(szThreadName);
        FinishEvent = MakeEvent();
        StopEvent = MakeEvent();
        StartEvent = MakeEvent();
    } catch (...) {
        // A constructor that throws has no destructor to clean up after it.
        CloseEvents();
        FailConstruction<CThreadObjectInitException>(*this);
    }
}

void CThreadObject::CopyName(const WCHAR* szThreadName)
{
    try {
        const std::size_t cchName = std::char_traits<WCHAR>::length(szThreadName) + 1;
        m_szThreadName.reset(new (std::nothrow) WCHAR[cchName]);
        if (m_szThreadName == nullptr) {
            throw CMemAllocException(*this, TEXT("m_szThreadName"));
        }
        std::char_traits<WCHAR>::copy(m_szThreadName.get(), szThreadName, cchName);
    } catch (...) {
        IsHandling<CMessage>();
        CPointerWarning(*this, ERR_FLOATING_POINTER, TEXT("szThreadName"));
        throw;
    }
}

HANDLE CThreadObject::MakeEvent() const
{
    const HANDLE hEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (hEvent == nullptr) {
        throw CCreateEventException(*this, GetLastError());
    }
    return hEvent;
}

CThreadObject::~CThreadObject()
{
    const CDestructionTrace trace(*this, s_szClass);
    if (m_bRunning) {
        StopThread();
    }
    CloseEvents();
}

void CThreadObject::CloseEvents() noexcept
{
    CloseEvent(FinishEvent, TEXT("FinishEvent"));
    CloseEvent(StopEvent, TEXT("StopEvent"));
    CloseEvent(StartEvent, TEXT("StartEvent"));
}

void CThreadObject::CloseEvent(HANDLE& hEvent, const WCHAR* szEvent) noexcept
{
    if (hEvent != nullptr && !CloseHandle(hEvent)) {
        CVariableErrorWarning(*this, ERR_DELETE_VARIABLE, szEvent, GetLastError());
    }
    hEvent = nullptr;
}

bool CThreadObject::StartThread()
{
    const CNameCopy name(m_szThreadName.get());
    const COperation op(*this, s_szClass, TEXT("StartThread"), name);
    return op.Run(Absorb<CUnableToCreateThreadException>(), [this] {
        DropFinishedThread();
        ClearEvent(*this, StopEvent);
        ClearEvent(*this, FinishEvent);
        if (m_hThread == nullptr) {
            Launch();
        } else {
            m_bRunning = true;
        }
        return true;
    });
}

/// Once m_bStarting is false again the object may be gone.
void CThreadObject::Launch()
{
    m_bStarting = true;
    m_bRunning = true;
    m_hThread = CreateThread(nullptr, 0, ThreadStarter, this, 0, &m_dwThreadId);
    if (m_hThread == nullptr) {
        const DWORD dwError = GetLastError();
        m_bRunning = false;
        m_bStarting = false;
        throw CUnableToCreateThreadException(*this, m_szThreadName.get(), dwError);
    }
    m_bStarting = false;
}

/// A thread that is about to end is gone, too: it will never look at its stop event again.
void CThreadObject::DropFinishedThread() noexcept
{
    if (m_hThread == nullptr) {
        return;
    }
    const bool bSaidSo = IsSignalled(FinishEvent);
    if (IsSignalled(m_hThread, bSaidSo ? LAST_LINES_MILLISECONDS : 0) || bSaidSo) {
        CloseThread();
    }
}

bool CThreadObject::StopThread()
{
    const COperation op(*this, s_szClass, TEXT("StopThread"), m_szThreadName.get());
    return op.Run(Absorb<>(), [this] {
        if (m_hThread != nullptr && m_bRunning) {
            try {
                SignalEvent(*this, StopEvent);
                AwaitFinish();
            } catch (CSetEventException& exception) {
                exception.WriteIfUnwritten();
            }
        }
        return CleanThread();
    });
}

/// Ends also when a message that is dispatched here has led to another stop, and when the thread has ended
/// without setting its event.
void CThreadObject::AwaitFinish() const noexcept
{
    // An object that deletes itself does so on its own thread.
    if (GetCurrentThreadId() == m_dwThreadId) {
        return;
    }
    const HANDLE hEnds[] = {FinishEvent, m_hThread};
    constexpr DWORD dwEnds = static_cast<DWORD>(std::size(hEnds));
    DWORD dwResult = WAIT_OBJECT_0 + dwEnds;
    while (dwResult == WAIT_OBJECT_0 + dwEnds) {
        DispatchPendingMessages(*this);
        if (m_hThread == nullptr) {
            return;
        }
        dwResult = MsgWaitForMultipleObjects(dwEnds, hEnds, FALSE, INFINITE, QS_ALLINPUT);
    }
    // The thread still uses the object until it has ended.
    IsSignalled(m_hThread, LAST_LINES_MILLISECONDS);
}

bool CThreadObject::CleanThread()
{
    const COperation op(*this, s_szClass, TEXT("CleanThread"), m_szThreadName.get());
    return op.Run(Absorb<>(), [this] {
        const bool bThread = m_hThread != nullptr;
        CloseThread();
        return bThread;
    });
}

void CThreadObject::CloseThread() noexcept
{
    if (m_hThread != nullptr && !CloseHandle(m_hThread)) {
        CVariableErrorWarning(*this, ERR_DELETE_VARIABLE, m_szThreadName.get(), GetLastError());
    }
    m_hThread = nullptr;
    m_bRunning = false;
}

void CThreadObject::DeleteThis()
{
    const CNameCopy name(m_szThreadName.get());
    const COperation op(*this, s_szClass, TEXT("DeleteThis"), name);
    op.Run(Absorb<>(), [&] { DeleteVariable(op.GetOrigin(), name, [this] { delete this; }); });
}

DWORD WINAPI CThreadObject::ThreadStarter(LPVOID pObject)
{
    try {
        static_cast<CThreadObject*>(pObject)->RunThread();
    } catch (...) {
        // The object, whose tag this would be written under, may be gone.
        CWarning({ERR_MESSAGE_APP, nullptr}, ERR_UNHANDLED_EXCEPTION);
    }
    return 0;
}

void CThreadObject::RunThread()
{
    const auto passOn = [](const COperation&) { throw; };
    const COperation op(*this, s_szClass, TEXT("ThreadStarter"), m_szThreadName.get());
    op.Run(passOn, [this] { Thread(); });
    if (m_bAutoDelete) {
        while (m_bStarting) {
            Sleep(POLL_MILLISECONDS);
        }
        DeleteThis();
    }
}

void CThreadObject::SignalStart() const noexcept
{
    TrySignalEvent(*this, StartEvent);
}

void CThreadObject::SignalFinish() const noexcept
{
    TrySignalEvent(*this, FinishEvent);
}

bool CThreadObject::AwaitStop(DWORD dwMilliseconds) const noexcept
{
    return WaitForSingleObject(StopEvent, dwMilliseconds) != WAIT_TIMEOUT;
}
