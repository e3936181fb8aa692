#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "Exceptions.h"
#include "TestMachine.h"
#include "TestThread.h"
#include "Thread.h"
#include "guard/StructuredExceptions.h"

namespace {

constexpr DWORD PROMPT_MILLISECONDS = 3000;

class ThreadObject : public CTestMachine
{
protected:
    /// Whether stopping takes no longer than a thread that has nothing more to do.
    static bool StopsPromptly(CTestThread& thread)
    {
        const DWORD dwBegin = GetTickCount();
        return thread.StopThread() && GetTickCount() - dwBegin < PROMPT_MILLISECONDS;
    }
};

TEST_F(ThreadObject, RunsUntilItIsStoppedAndThenAgain)
{
    CTestThread thread;
    EXPECT_EQ(0u, thread.m_dwThreadId);
    for (int nRun = 1; nRun <= 3; ++nRun) {
        ASSERT_TRUE(thread.StartThread());
        EXPECT_TRUE(thread.m_bRunning);
        EXPECT_NE(nullptr, thread.m_hThread);
        EXPECT_NE(GetCurrentThreadId(), thread.m_dwThreadId);
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread.StartEvent, 10000)) << "the thread says so";
        EXPECT_TRUE(thread.StartThread()) << "it is running";
        EXPECT_TRUE(StopsPromptly(thread));
        EXPECT_FALSE(thread.m_bRunning);
        EXPECT_EQ(nullptr, thread.m_hThread);
        EXPECT_EQ(nRun, thread.m_nRuns) << "one thread for each run";
    }
    EXPECT_TRUE(Log().empty());
    EXPECT_FALSE(thread.StopThread());
    EXPECT_EQ((std::vector<std::string>{FAILED, FAILED}), Log()) << "of CleanThread and of StopThread";
}

TEST_F(ThreadObject, AThreadThatEndedByItselfIsStoppedAtOnceAndReplaced)
{
    struct
    {
        const char* szName;
        CTestThread::Body body;
        std::vector<std::string> internalLog;
    } const rows[] = {
        {"as agreed", [](CTestThread& self) { self.SignalFinish(); }, {}},
        {"without a word", [](CTestThread&) {}, {}},
        {"by an exception",
         [](CTestThread&) { throw std::runtime_error("test"); },
         {"[WARNING] An unhandled exception occurred"}},
        {"by a processor fault",
         [](CTestThread&) {
             volatile DWORD* volatile pWild = reinterpret_cast<DWORD*>(0x40);
             *pWild = 1;
         },
         {"[WARNING] An unhandled exception occurred"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szName);
        CTestThread thread(row.body);
        ASSERT_TRUE(thread.StartThread());
        ASSERT_TRUE(thread.HasEnded());
        EXPECT_TRUE(thread.m_bRunning) << "nobody has stopped it";
        EXPECT_EQ(row.internalLog, InternalLog());
        EXPECT_TRUE(StopsPromptly(thread));
        ASSERT_TRUE(thread.StartThread());
        ASSERT_TRUE(thread.HasEnded());
        ASSERT_TRUE(thread.StartThread()) << "a new one in the place of the one that ended";
        ASSERT_TRUE(thread.HasEnded());
        EXPECT_EQ(3, thread.m_nRuns);
        EXPECT_TRUE(StopsPromptly(thread));
        ClearLog();
    }
}

std::atomic<int> g_nDispatched;

void CALLBACK OnMessage(HWND, UINT, UINT_PTR, DWORD)
{
    ++g_nDispatched;
}

void CALLBACK OnFailingMessage(HWND, UINT, UINT_PTR, DWORD)
{
    ++g_nDispatched;
    FaultGuard::RaiseForeignException();
}

void Post(DWORD dwThreadId, TIMERPROC pfnTimer)
{
    EXPECT_TRUE(PostThreadMessageW(dwThreadId, WM_TIMER, 0, reinterpret_cast<LPARAM>(pfnTimer)));
}

TEST_F(ThreadObject, DispatchesTheMessagesOfItsOwnerWhileItIsStopped)
{
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    const DWORD dwOwner = GetCurrentThreadId();
    // Finishes only when its owner has dispatched what was posted before and during the wait.
    const CTestThread::Body untilDispatched = [=](CTestThread& self) {
        self.AwaitStop(INFINITE);
        Post(dwOwner, OnMessage);
        for (int n = 0; n < 1000 && g_nDispatched < 4; ++n) {
            Sleep(10);
        }
        self.SignalFinish();
    };
    struct
    {
        const char* szName;
        CTestThread::Body body;
        int nDispatched;
    } const rows[] = {{"one that runs", untilDispatched, 4},
                      {"one that has ended", [](CTestThread& self) { self.SignalFinish(); }, 3}};
    for (const auto& row : rows) {
        g_nDispatched = 0;
        CTestThread thread(row.body);
        thread.StartThread();
        WaitForSingleObject(thread.m_hThread, row.nDispatched == 3 ? INFINITE : 0);
        Post(dwOwner, OnMessage);
        Post(dwOwner, OnFailingMessage);
        Post(dwOwner, OnMessage);
        EXPECT_TRUE(thread.StopThread());
        EXPECT_EQ(row.nDispatched, g_nDispatched) << row.szName;
#ifndef _WIN32
        // Windows itself deals with what a window procedure throws.
        EXPECT_EQ(Lines{UNHANDLED}, Log());
#endif
        ClearLog();
    }
}

void CALLBACK OnEndlessMessage(HWND, UINT, UINT_PTR, DWORD)
{
    Post(GetCurrentThreadId(), OnEndlessMessage);
}

TEST_F(ThreadObject, IsStoppedUnderMessagesThatNeverEnd)
{
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    CTestThread thread;
    thread.m_dwLongestStop = 60000;
    thread.StartThread();
    EXPECT_TRUE(PostThreadMessageW(GetCurrentThreadId(), WM_QUIT, 7, 0));
    Post(GetCurrentThreadId(), OnEndlessMessage);
    EXPECT_TRUE(thread.StopThread());
    WPARAM nExitCode = 0;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        nExitCode = message.message == WM_QUIT ? message.wParam : nExitCode;
    }
    EXPECT_EQ(7u, nExitCode) << "the owner's own loop has to see it";
}

CTestThread* g_pStoppedByMessage;

void CALLBACK OnStopMessage(HWND, UINT, UINT_PTR, DWORD)
{
    g_pStoppedByMessage->StopThread();
}

TEST_F(ThreadObject, AMessageMayStopTheThreadThatIsBeingStopped)
{
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    CTestThread thread;
    thread.StartThread();
    g_pStoppedByMessage = &thread;
    Post(GetCurrentThreadId(), OnStopMessage);
    EXPECT_FALSE(thread.StopThread()) << "the inner stop has done it";
    EXPECT_EQ(nullptr, thread.m_hThread);
}

TEST_F(ThreadObject, IsStartedAgainAfterAStopThatWasGivenUp)
{
    struct
    {
        const char* szName;
        bool bHears;
        std::vector<std::string> log;
        int nRuns;
    } const rows[] = {
        {"one that has not heard of the stop goes on", false, {}, 1},
        {"one that has heard of it has to end first",
         true,
         {"[WARNING] Thread was asked to stop and has not finished yet, Variable: TestThread", FAILED},
         2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szName);
        CHappening goOn;
        CTestThread thread([&](CTestThread& self) {
            const bool bStop = row.bHears && self.m_nRuns == 1 && self.AwaitStop(INFINITE);
            goOn.Wait();
            if (!bStop) {
                self.AwaitStop(INFINITE);
            }
            self.SignalFinish();
        });
        thread.m_dwLongestStop = 100;
        thread.StartThread();
        EXPECT_FALSE(thread.StopThread());
        EXPECT_FALSE(thread.IsAlive());
        ClearLog();
        EXPECT_EQ(!row.bHears, thread.StartThread()) << "what it says is how it is";
        EXPECT_EQ(row.log, Log());
        goOn.Happen();
        EXPECT_EQ(row.bHears,
                  WaitForSingleObject(thread.m_hThread, row.bHears ? 10000 : 100) == WAIT_OBJECT_0);
        EXPECT_TRUE(thread.StartThread());
        EXPECT_TRUE(thread.IsAlive());
        thread.m_dwLongestStop = 10000;
        EXPECT_TRUE(thread.StopThread());
        EXPECT_EQ(row.nRuns, thread.m_nRuns);
    }
}

TEST_F(ThreadObject, DeletesItself)
{
    SetTraceMask(0xFFFFFFFF);
    CTestThread::m_bGone = false;
    auto* pThread = new CTestThread([](CTestThread& self) { self.SignalFinish(); }, true);
    EXPECT_TRUE(pThread->StartThread());
    const auto isDone = [this] { return Count("[EXIT ] CThreadObject::DeleteThis::TestThread") == 1; };
    for (int n = 0; n < 1000 && !isDone(); ++n) {
        Sleep(10);
    }
    EXPECT_TRUE(isDone());
    EXPECT_EQ(1, Count("[ENTRY] CThreadObject::ThreadStarter::TestThread"));
    EXPECT_EQ(1, Count("[EXIT ] CThreadObject::StartThread::TestThread, Return: 0x1"));
    EXPECT_TRUE(CTestThread::m_bGone);
}

TEST_F(ThreadObject, NeedsAName)
{
    struct CNameless : CThreadObject
    {
        CNameless() : CThreadObject(LUM_GINA_APP, LUM_GINA_MTM, nullptr, false) {}
        void Thread() override {}
    };
    EXPECT_THROW(CNameless(), CBadArgException);
    EXPECT_EQ((std::vector<std::string>{"[EXCEPTION] A bad argument was provided, Argument: szThreadName"}),
              Log());
}

} // namespace
