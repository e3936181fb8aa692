#include "ThreadObject.h"

#include <iterator>

#include "GinaNames.h"
#include "GuardedText.h"
#include "Operation.h"
#include "RequireArgument.h"
#include "guard/FaultGuard.h"

namespace {

// A thread that has set FinishEvent has only its last trace lines to write. The wait for it is limited: while
// the library is being unloaded no thread can end, and the process must not hang.
constexpr DWORD LAST_LINES_MILLISECONDS = 2000;
constexpr DWORD POLL_MILLISECONDS = 1;
// A new thread begins at once, unless the caller is inside a DllMain: the loader lock holds it back then.
constexpr DWORD LONGEST_BEGIN_MILLISECONDS = 2000;
constexpr WCHAR TXT_NOT_FINISHED[] = TEXT("Thread has not finished in time. It is left alone");
constexpr WCHAR TXT_STILL_STOPPING[] = TEXT("Thread was asked to stop and has not finished yet");

/// A copy of a thread's name, cut to fit, for trace lines written when the object may be gone.
class CNameCopy
{
public:
    explicit CNameCopy(const WCHAR* szName) noexcept
    {
        FormatText(m_szName, std::size(m_szName), TEXT("%s"), {szName});
    }
    operator const WCHAR*() const noexcept { return m_szName; }

private:
    WCHAR m_szName[NAME_CAPACITY];
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

/// For thread functions: a failure is only reported.
void TrySignalEvent(const CMessageOrigin& origin, HANDLE hEvent) noexcept
{
    try {
        SignalEvent(origin, hEvent);
    } catch (CSetEventException& exception) {
        exception.WriteIfUnwritten();
    }
}

/// The window messages that come in while a thread waits for something else.
class CIncomingMessages
{
public:
    explicit CIncomingMessages(const CMessageOrigin& origin) noexcept : m_Origin(origin) {}
    ~CIncomingMessages()
    {
        // WM_QUIT is for the message loop that this wait has interrupted.
        if (m_bQuit) {
            PostThreadMessageW(GetCurrentThreadId(), WM_QUIT, m_nExitCode, 0);
        }
    }
    CIncomingMessages(const CIncomingMessages&) = delete;
    CIncomingMessages& operator=(const CIncomingMessages&) = delete;

    /// Dispatches pending messages; true when none is left. Gives up after dwMilliseconds, and after as many
    /// messages as a queue can hold: some come again each time they are dispatched.
    bool DispatchPending(DWORD dwMilliseconds) noexcept
    {
        const DWORD dwStart = GetTickCount();
        for (int n = 0; n < QUEUE_CAPACITY && GetTickCount() - dwStart < dwMilliseconds; ++n) {
            if (!DispatchNext()) {
                return true;
            }
        }
        return false;
    }

private:
    static constexpr int QUEUE_CAPACITY = 10000;

    /// Dispatches one message; false when there is none. Window procedures are somebody else's code, and
    /// PeekMessage runs some as well. One that fails must not end the wait.
    bool DispatchNext() noexcept
    {
        try {
            return CallIntoDLL([this] {
                MSG message;
                if (!PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
                    return false;
                }
                if (message.message == WM_QUIT) {
                    m_bQuit = true;
                    m_nExitCode = message.wParam;
                } else {
                    DispatchMessageW(&message);
                }
                return true;
            });
        } catch (...) {
            CWarning(m_Origin, ERR_UNHANDLED_EXCEPTION);
            return true;
        }
    }

    CMessageOrigin m_Origin;
    bool m_bQuit = false;
    WPARAM m_nExitCode = 0;
};

} // namespace

CThreadObject::CThreadObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, const WCHAR* szThreadName,
                             bool bAutoDelete)
    : CGlobalObject(szAPPArg, szMTMArg), m_dwThreadId(0), m_hThread(nullptr), m_bRunning(false),
      FinishEvent(nullptr), StopEvent(nullptr), StartEvent(nullptr), m_bAutoDelete(bAutoDelete),
      m_bStarting(false), m_bBegun(false), m_bAskedToStop(false)
{
    const CConstructionTrace trace(*this, s_szClass);
    RequireArgument(*this, szThreadName, TEXT("szThreadName"));
    try {
        CopyName(szThreadName);
        FinishEvent = MakeEvent();
        StopEvent = MakeEvent();
        StartEvent = MakeEvent();
    } catch (...) {
        // After a constructor that throws, the destructor does not run.
        CloseEvents();
        FailConstruction<CThreadObjectInitException>(*this);
    }
}

void CThreadObject::CopyName(const WCHAR* szThreadName)
{
    try {
        m_szThreadName = CopyText(*this, szThreadName, TEXT("m_szThreadName"));
    } catch (...) {
        ReportIf<CMessage>();
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
    const CNameCopy name(m_szThreadName);
    const COperation op(*this, s_szClass, TEXT("StartThread"), name);
    return op.Run(Absorb<CUnableToCreateThreadException>(), [this] {
        DropFinishedThread();
        if (m_bAskedToStop && !TakeStopBack()) {
            CVariableWarning(*this, TXT_STILL_STOPPING, m_szThreadName);
            return false;
        }
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

/// When m_bStarting becomes false, a thread that deletes the object may do so: touch nothing after that.
void CThreadObject::Launch()
{
    m_bStarting = true;
    m_bBegun = false;
    m_bRunning = true;
    m_hThread = CreateThread(nullptr, 0, ThreadStarter, this, 0, &m_dwThreadId);
    if (m_hThread == nullptr) {
        const DWORD dwError = GetLastError();
        m_bRunning = false;
        m_bStarting = false;
        throw CUnableToCreateThreadException(*this, m_szThreadName, dwError);
    }
    AwaitBeginning();
    m_bStarting = false;
}

/// Waits until the thread has begun. While a library is being unloaded no thread can begin: one of this
/// library that had not could not be stopped then, and would later begin in code that is gone.
void CThreadObject::AwaitBeginning() const noexcept
{
    const DWORD dwStart = GetTickCount();
    while (!m_bBegun && GetTickCount() - dwStart < LONGEST_BEGIN_MILLISECONDS) {
        Sleep(POLL_MILLISECONDS);
    }
}

/// Closes the handle of a thread that has ended. One that has set FinishEvent counts as ended: it does not
/// look at StopEvent again.
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

/// Withdraws the request to stop after StopThread gave up. False when the thread has seen it already: it will
/// end at some time.
bool CThreadObject::TakeStopBack() noexcept
{
    m_bAskedToStop = !IsSignalled(StopEvent);
    return !m_bAskedToStop;
}

bool CThreadObject::StopThread()
{
    const COperation op(*this, s_szClass, TEXT("StopThread"), m_szThreadName);
    return op.Run(Absorb<>(), [this] {
        if (m_hThread != nullptr && m_bRunning) {
            try {
                SignalEvent(*this, StopEvent);
                m_bAskedToStop = true;
                if (!AwaitFinish()) {
                    CVariableWarning(*this, TXT_NOT_FINISHED, m_szThreadName);
                    return false;
                }
            } catch (CSetEventException& exception) {
                exception.WriteIfUnwritten();
            }
        }
        return CleanThread();
    });
}

/// False when the thread has not finished in time. True also when the thread has ended without setting its
/// event, and when a message dispatched here has led to another stop.
bool CThreadObject::AwaitFinish() const noexcept
{
    // With bAutoDelete, the destructor runs on the thread itself, which cannot wait for its own end.
    if (GetCurrentThreadId() == m_dwThreadId) {
        return true;
    }
    const DWORD dwStart = GetTickCount();
    CIncomingMessages messages(*this);
    DWORD dwLeft = m_dwLongestStop;
    for (bool bFinished = false; !bFinished;) {
        const bool bAll = messages.DispatchPending(dwLeft);
        if (m_hThread == nullptr) {
            return true;
        }
        const DWORD dwWaited = GetTickCount() - dwStart;
        dwLeft = dwWaited < m_dwLongestStop ? m_dwLongestStop - dwWaited : 0;
        bFinished = AwaitFinishOrInput(bAll ? dwLeft : 0);
        if (!bFinished && dwLeft == 0) {
            return false;
        }
    }
    // The thread still uses the object until it has ended.
    IsSignalled(m_hThread, LAST_LINES_MILLISECONDS);
    return true;
}

/// Whether the thread has finished. Returns early when a window message comes.
bool CThreadObject::AwaitFinishOrInput(DWORD dwMilliseconds) const noexcept
{
    const HANDLE hEnds[] = {FinishEvent, m_hThread};
    constexpr DWORD dwEnds = static_cast<DWORD>(std::size(hEnds));
    const DWORD dwResult = MsgWaitForMultipleObjects(dwEnds, hEnds, FALSE, dwMilliseconds, QS_ALLINPUT);
    if (dwResult == WAIT_FAILED) {
        // A failed wait must not pass for the end of the thread: the object would be destroyed under it.
        return IsSignalled(FinishEvent) || IsSignalled(m_hThread, POLL_MILLISECONDS);
    }
    return dwResult < WAIT_OBJECT_0 + dwEnds;
}

bool CThreadObject::IsAlive() const noexcept
{
    return m_bRunning && !m_bAskedToStop && m_hThread != nullptr && !IsSignalled(m_hThread);
}

bool CThreadObject::CleanThread()
{
    const COperation op(*this, s_szClass, TEXT("CleanThread"), m_szThreadName);
    return op.Run(Absorb<>(), [this] {
        const bool bThread = m_hThread != nullptr;
        CloseThread();
        return bThread;
    });
}

void CThreadObject::CloseThread() noexcept
{
    if (m_hThread != nullptr && !CloseHandle(m_hThread)) {
        CVariableErrorWarning(*this, ERR_DELETE_VARIABLE, m_szThreadName, GetLastError());
    }
    m_hThread = nullptr;
    m_bRunning = false;
    m_bAskedToStop = false;
}

void CThreadObject::DeleteThis()
{
    const CNameCopy name(m_szThreadName);
    const COperation op(*this, s_szClass, TEXT("DeleteThis"), name);
    op.Run(Absorb<>(), [&] { DeleteVariable(op.GetOrigin(), name, [this] { delete this; }); });
}

DWORD WINAPI CThreadObject::ThreadStarter(LPVOID pObject)
{
    try {
        auto& self = *static_cast<CThreadObject*>(pObject);
        self.m_bBegun = true;
        self.RunThread();
    } catch (...) {
        // The object, and the tag to write under, may be gone.
        CWarning({ERR_MESSAGE_APP, nullptr}, ERR_UNHANDLED_EXCEPTION);
    }
    return 0;
}

void CThreadObject::RunThread()
{
    const auto passOn = [](const COperation&) { throw; };
    const COperation op(*this, s_szClass, TEXT("ThreadStarter"), m_szThreadName);
    op.Run(passOn, [this] { CallWithinHost([this] { Thread(); }); });
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
