#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "Exceptions.h"
#include "TestMachine.h"
#include "TestThread.h"
#include "guard/FaultGuard.h"

namespace {

constexpr const char* FAILED = "[WARNING] The requested operation failed or it was cancelled";
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

TEST_F(ThreadObject, TracesUnderTheNameOfItsThread)
{
    SetTraceMask(0xFFFFFFFF);
    {
        CTestThread thread;
        ClearLog();
        thread.StartThread();
        thread.StopThread();
    }
    for (const char* szLine :
         {"[ENTRY] CThreadObject::StartThread::TestThread",
          "[EXIT ] CThreadObject::StartThread::TestThread, Return: 0x1",
          "[ENTRY] CThreadObject::ThreadStarter::TestThread",
          "[EXIT ] CThreadObject::ThreadStarter::TestThread", "[ENTRY] CThreadObject::StopThread::TestThread",
          "[ENTRY] CThreadObject::CleanThread::TestThread",
          "[EXIT ] CThreadObject::CleanThread::TestThread, Return: 0x1",
          "[EXIT ] CThreadObject::StopThread::TestThread, Return: 0x1"})
    {
        EXPECT_EQ(1, Count(szLine)) << szLine;
    }
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
    for (const TIMERPROC pfnMessage : {OnMessage, OnFailingMessage}) {
        g_nDispatched = 0;
        const DWORD dwOwner = GetCurrentThreadId();
        // Finishes only when its owner has dispatched what was posted before and during the wait.
        CTestThread thread([=](CTestThread& self) {
            self.AwaitStop(INFINITE);
            Post(dwOwner, pfnMessage);
            for (int n = 0; n < 1000 && g_nDispatched < 3; ++n) {
                Sleep(10);
            }
            EXPECT_EQ(3, g_nDispatched);
            self.SignalFinish();
        });
        thread.StartThread();
        Post(dwOwner, pfnMessage);
        Post(dwOwner, pfnMessage);
        EXPECT_TRUE(thread.StopThread());
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
    thread.StartThread();
    EXPECT_TRUE(PostThreadMessageW(GetCurrentThreadId(), WM_QUIT, 7, 0));
    Post(GetCurrentThreadId(), OnEndlessMessage);
    EXPECT_TRUE(StopsPromptly(thread));
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

TEST_F(ThreadObject, IsStoppedWhenItIsDestroyed)
{
    bool bStopped = false;
    {
        CTestThread thread([&](CTestThread& self) {
            bStopped = self.AwaitStop(10000);
            self.SignalFinish();
        });
        thread.StartThread();
    }
    EXPECT_TRUE(bStopped);
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
