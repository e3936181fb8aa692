#include <atomic>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

constexpr DWORD LONG_MILLISECONDS = 20000;

/// An event that is closed with its object.
struct CTestEvent
{
    CTestEvent(BOOL bManualReset, BOOL bInitialState)
        : hEvent(CreateEventW(nullptr, bManualReset, bInitialState, nullptr))
    {
        EXPECT_NE(nullptr, hEvent);
    }
    ~CTestEvent() { EXPECT_TRUE(CloseHandle(hEvent)); }

    const HANDLE hEvent;
};

/// Runs a procedure without captures on a thread of its own.
HANDLE Start(LPTHREAD_START_ROUTINE pfnStart, LPVOID pParameter)
{
    DWORD dwThreadId = 0;
    const HANDLE hThread = CreateThread(nullptr, 0, pfnStart, pParameter, 0, &dwThreadId);
    EXPECT_NE(nullptr, hThread);
    EXPECT_NE(0u, dwThreadId);
    EXPECT_NE(GetCurrentThreadId(), dwThreadId);
    return hThread;
}

TEST(Waiting, EventsAreResetByTheWaitOrByHand)
{
    for (const BOOL bManual : {FALSE, TRUE}) {
        for (const BOOL bInitially : {FALSE, TRUE}) {
            const CTestEvent event(bManual, bInitially);
            const auto wait = [&] { return WaitForSingleObject(event.hEvent, 0); };
            const DWORD dwAgain = bManual ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
            EXPECT_EQ(bInitially ? WAIT_OBJECT_0 : WAIT_TIMEOUT, wait());
            EXPECT_EQ(bInitially ? dwAgain : WAIT_TIMEOUT, wait());
            EXPECT_TRUE(SetEvent(event.hEvent));
            EXPECT_TRUE(SetEvent(event.hEvent)) << "once more changes nothing";
            EXPECT_EQ(WAIT_OBJECT_0, wait());
            EXPECT_EQ(dwAgain, wait());
            EXPECT_TRUE(SetEvent(event.hEvent));
            EXPECT_TRUE(ResetEvent(event.hEvent));
            EXPECT_EQ(WAIT_TIMEOUT, wait());
        }
    }
}

struct CHandover
{
    CTestEvent go{FALSE, FALSE};
    CTestEvent done{FALSE, FALSE};
    std::atomic<int> nWoken = 0;
};

DWORD WINAPI WaitAndAnswer(LPVOID pParameter)
{
    auto& handover = *static_cast<CHandover*>(pParameter);
    if (WaitForSingleObject(handover.go.hEvent, LONG_MILLISECONDS) == WAIT_OBJECT_0) {
        ++handover.nWoken;
        SetEvent(handover.done.hEvent);
    }
    return 0;
}

TEST(Waiting, AnAutoResetEventWakesOneThreadAndAThreadIsSignalledWhenItEnds)
{
    CHandover handover;
    const HANDLE threads[] = {Start(WaitAndAnswer, &handover), Start(WaitAndAnswer, &handover)};
    for (int nWoken = 1; nWoken <= 2; ++nWoken) {
        SetEvent(handover.go.hEvent);
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(handover.done.hEvent, LONG_MILLISECONDS));
        EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(handover.done.hEvent, 50));
        EXPECT_EQ(nWoken, handover.nWoken);
    }
    for (const HANDLE hThread : threads) {
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(hThread, LONG_MILLISECONDS));
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(hThread, 0)) << "for good";
        EXPECT_TRUE(CloseHandle(hThread));
    }
}

TEST(Waiting, TakesItsTime)
{
    const CTestEvent event(FALSE, FALSE);
    const DWORD dwBegin = GetTickCount();
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(event.hEvent, 100));
    EXPECT_EQ(WAIT_TIMEOUT, MsgWaitForMultipleObjects(1, &event.hEvent, FALSE, 100, QS_ALLINPUT));
    EXPECT_GE(GetTickCount() - dwBegin, 150u);
}

TEST(Waiting, RefusesHandlesThatAreNone)
{
    const HANDLE hNone = reinterpret_cast<HANDLE>(0xFFF0);
    EXPECT_FALSE(SetEvent(hNone));
    EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
    EXPECT_FALSE(ResetEvent(hNone));
    EXPECT_EQ(WAIT_FAILED, WaitForSingleObject(hNone, 0));
    EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
    EXPECT_EQ(WAIT_FAILED, MsgWaitForMultipleObjects(1, &hNone, FALSE, 0, QS_ALLINPUT));
    EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
}

// Messages

void DrainMessages()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    }
}

DWORD WaitForEventOrMessage(HANDLE hEvent)
{
    return MsgWaitForMultipleObjects(1, &hEvent, FALSE, 0, QS_ALLINPUT);
}

TEST(Messages, EndAWaitUntilTheyHaveBeenLookedAt)
{
    DrainMessages();
    const CTestEvent event(FALSE, FALSE);
    ASSERT_TRUE(PostThreadMessageW(GetCurrentThreadId(), WM_APP, 7, 8));
    EXPECT_EQ(WAIT_OBJECT_0 + 1, WaitForEventOrMessage(event.hEvent));
    MSG message = {};
    EXPECT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(UINT(WM_APP), message.message);
    EXPECT_EQ(WAIT_TIMEOUT, WaitForEventOrMessage(event.hEvent)) << "it is not new any more";
    ASSERT_TRUE(PostThreadMessageW(GetCurrentThreadId(), WM_APP + 1, 0, 0));
    SetEvent(event.hEvent);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForEventOrMessage(event.hEvent)) << "objects come first";
    EXPECT_EQ(WAIT_OBJECT_0 + 1, WaitForEventOrMessage(event.hEvent)) << "the event was used up";
    for (const UINT nMessage : {UINT(WM_APP), UINT(WM_APP + 1)}) {
        ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
        EXPECT_EQ(nMessage, message.message);
        EXPECT_EQ(nullptr, message.hwnd);
    }
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
}

DWORD WINAPI PostLater(LPVOID pParameter)
{
    Sleep(50);
    PostThreadMessageW(*static_cast<const DWORD*>(pParameter), WM_APP, 0, 0);
    return 0;
}

TEST(Messages, OfAnotherThreadWakeTheOneThatWaits)
{
    DrainMessages();
    const CTestEvent event(FALSE, FALSE);
    DWORD dwThreadId = GetCurrentThreadId();
    const HANDLE hThread = Start(PostLater, &dwThreadId);
    EXPECT_EQ(WAIT_OBJECT_0 + 1,
              MsgWaitForMultipleObjects(1, &event.hEvent, FALSE, LONG_MILLISECONDS, QS_ALLINPUT));
    WaitForSingleObject(hThread, LONG_MILLISECONDS);
    CloseHandle(hThread);
    DrainMessages();
    EXPECT_FALSE(PostThreadMessageW(0xFFFFFFF0, WM_APP, 0, 0)) << "no such thread";
}

UINT_PTR g_nTimer;

void CALLBACK OnTimer(HWND, UINT, UINT_PTR nTimer, DWORD)
{
    g_nTimer = nTimer;
}

TEST(Messages, OfATimerAreDispatchedToItsProcedure)
{
    DrainMessages();
    ASSERT_TRUE(PostThreadMessageW(GetCurrentThreadId(), WM_TIMER, 42, reinterpret_cast<LPARAM>(OnTimer)));
    MSG message = {};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(0u, g_nTimer);
    DispatchMessageW(&message);
    EXPECT_EQ(42u, g_nTimer);
    message.lParam = 0;
    DispatchMessageW(&message);
}

} // namespace
