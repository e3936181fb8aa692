#include <memory>

#include "../chaining/ChainMachine.h"
#include "Exceptions.h"
#include "FailingAllocation.h"
#include "HostMachine.h"
#include "LUMRegMonitorThreadObject.h"
#include "TestMachine.h"
#include "TestThread.h"
#include "platform/FaultInjection.h"

namespace {

constexpr const char* NOT_MADE = "[EXCEPTION] Unable to instantiate CThreadObject object";
constexpr const char* NOT_SET = "[EXCEPTION] SetEvent function call failed, Error: 0x6";

class FailingThread : public CTestMachine
{
};

TEST_F(FailingThread, CannotBeMadeWithoutItsEvents)
{
    for (DWORD dwEvent = 1; dwEvent <= 3; ++dwEvent) {
        ClearLog();
        const CFaultInjection fault(PlatformCall::CreateEventW, dwEvent, ERROR_NO_SYSTEM_RESOURCES);
        EXPECT_THROW(CTestThread(), CThreadObjectInitException);
        const Lines log = Log();
        ASSERT_EQ(2u, log.size());
        EXPECT_EQ("[EXCEPTION] CreateEvent function call failed, Error: 0x5aa", log[0]);
        EXPECT_EQ(NOT_MADE, log[1]);
    }
}

TEST_F(FailingThread, CannotBeMadeWithoutItsName)
{
    const CFailingAllocation fault(0, CFailingAllocation::Kind::Nothrow);
    EXPECT_THROW(CTestThread(), CThreadObjectInitException);
    EXPECT_EQ((Lines{"[EXCEPTION] Memory could not be allocated, Variable: m_szThreadName",
                     "[WARNING] Pointer is probably floating, Pointer: szThreadName", NOT_MADE}),
              Log());
}

TEST_F(FailingThread, IsNotStarted)
{
    struct
    {
        PlatformCall call;
        DWORD dwUse;
        Lines log;
    } const rows[] = {
        {PlatformCall::ResetEvent,
         1,
         {"[EXCEPTION] ResetEvent function call failed, Error: 0x6", UNHANDLED, FAILED}},
        {PlatformCall::ResetEvent,
         2,
         {"[EXCEPTION] ResetEvent function call failed, Error: 0x6", UNHANDLED, FAILED}},
        {PlatformCall::CreateThread,
         1,
         {"[EXCEPTION] Unable to create thread, Thread: TestThread, Error: 6", FAILED}},
    };
    for (const auto& row : rows) {
        CTestThread thread;
        {
            const CFaultInjection fault(row.call, row.dwUse, ERROR_INVALID_HANDLE);
            EXPECT_FALSE(thread.StartThread());
        }
        EXPECT_EQ(row.log, Log());
        EXPECT_FALSE(thread.m_bRunning);
        EXPECT_EQ(nullptr, thread.m_hThread);
        EXPECT_EQ(0, thread.m_nRuns);
        EXPECT_TRUE(thread.StartThread()) << "the next attempt may succeed";
        ClearLog();
    }
}

TEST_F(FailingThread, IsNotWaitedForWhenItCannotBeAsked)
{
    CTestThread thread;
    thread.StartThread();
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread.StartEvent, 10000));
    HANDLE hThread = thread.m_hThread;
    {
        const CFaultInjection fault(PlatformCall::SetEvent, 1, ERROR_INVALID_HANDLE);
        // The first closes the trace log.
        const CFaultInjection close(PlatformCall::CloseHandle, 2, ERROR_ACCESS_DENIED);
        EXPECT_TRUE(thread.StopThread());
    }
    EXPECT_EQ((Lines{NOT_SET, "[WARNING] Unable to delete variable, Variable: TestThread, Error: 0x5"}),
              Log());
    EXPECT_EQ(nullptr, thread.m_hThread) << "also when it could not be closed";
    // It is still there, and has to go before its object.
    SetEvent(thread.StopEvent);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(hThread, 10000));
    CloseHandle(hThread);
}

TEST_F(FailingThread, IsStoppedAlsoWhenNobodyCanWaitOrHearOfIt)
{
    struct
    {
        PlatformCall call;
        DWORD dwUse;
        Lines log;
    } const rows[] = {
        {PlatformCall::MsgWaitForMultipleObjects, 1, {}},
        // The third is the thread's own, after its start and the owner's request.
        {PlatformCall::SetEvent, 3, {NOT_SET}},
    };
    for (const auto& row : rows) {
        CTestThread thread;
        const CFaultInjection fault(row.call, row.dwUse, ERROR_INVALID_HANDLE);
        thread.StartThread();
        WaitForSingleObject(thread.StartEvent, 10000);
        const HANDLE hThread = thread.m_hThread;
        EXPECT_TRUE(thread.StopThread());
        EXPECT_TRUE(fault.HasFired());
        EXPECT_EQ(row.log, Log());
        EXPECT_EQ(WAIT_FAILED, WaitForSingleObject(hThread, 0)) << "its handle is closed";
    }
}

TEST_F(FailingThread, ClosesTheOtherEventsWhenOneCannotBeClosed)
{
    const char* const events[] = {"FinishEvent", "StopEvent", "StartEvent"};
    for (DWORD dwEvent = 1; dwEvent <= 3; ++dwEvent) {
        ClearLog();
        auto pThread = std::make_unique<CTestThread>();
        const HANDLE hStart = pThread->StartEvent;
        const HANDLE hFinish = pThread->FinishEvent;
        const HANDLE hStop = pThread->StopEvent;
        {
            const CFaultInjection fault(PlatformCall::CloseHandle, dwEvent, ERROR_ACCESS_DENIED);
            pThread.reset();
        }
        EXPECT_EQ((Lines{std::string("[WARNING] Unable to delete variable, Variable: ") +
                         events[dwEvent - 1] + ", Error: 0x5"}),
                  Log());
        EXPECT_EQ(1, CloseHandle(hStart) + CloseHandle(hFinish) + CloseHandle(hStop))
            << "the one that was left";
    }
}

// The registry monitor

class FailingMonitor : public CChainMachine
{
};

TEST_F(FailingMonitor, GoesOnWithoutItsEventsAndWritesNothingToAnUnchangedChain)
{
    SetValues(ValuesOf("lum_gina.dll msgina.dll"));
    StartHost();
    const auto own = Build();
    CLUMRegMonitorThreadObject monitor(own.get(), m_pConfiguration.get(), m_pWinlogon.get(), false);
    constexpr DWORD OPERATIONS_AND_REPORTS = 0xF6;
    SetTraceMask(OPERATIONS_AND_REPORTS);
    for (DWORD dwUse = 1; dwUse <= 2; ++dwUse) {
        SetEvent(monitor.StopEvent);
        ClearLog();
        const CFaultInjection fault(PlatformCall::SetEvent, dwUse, ERROR_INVALID_HANDLE);
        const CFaultInjection writes(REGISTRY_WRITES, 1, ERROR_SUCCESS);
        const CFaultInjection reads(PlatformCall::RegQueryValueExW, 1, ERROR_SUCCESS, WINLOGON_GINA_DLL);
        monitor.Thread();
        EXPECT_EQ(1, Count(NOT_SET));
        EXPECT_EQ(0u, writes.GetUses());
        EXPECT_NE(0u, reads.GetUses());
        EXPECT_EQ(1, Count("[EXIT ] CRegistryManager::operator!=, Return: 0x0")) << "it has compared";
        EXPECT_EQ(0, Count("[ENTRY] CRegistryManager::ResyncWithRegistry"));
        EXPECT_EQ(1, Count("[ENTRY] CLUMRegMonitorThreadObject::Thread"));
        EXPECT_EQ(1, Count("[EXIT ] CLUMRegMonitorThreadObject::Thread"));
    }
}

TEST_F(FailingMonitor, EndsWhenItCannotWait)
{
    SetValues(ValuesOf("lum_gina.dll msgina.dll"));
    StartHost();
    const auto own = Build();
    CLUMRegMonitorThreadObject monitor(own.get(), m_pConfiguration.get(), m_pWinlogon.get(), false);
    const CFaultInjection fault(PlatformCall::WaitForSingleObject, 1, ERROR_INVALID_HANDLE, nullptr,
                                FaultRepeat::FromThenOn);
    monitor.Thread();
    EXPECT_EQ(1u, fault.GetUses()) << "instead of comparing without a pause";
}

// The host

using FailingHostThreads = CHostMachine;

TEST_F(FailingHostThreads, KeepNobodyFromLoggingOn)
{
    Load();
    {
        const CFaultInjection fault(PlatformCall::CreateThread, 1, ERROR_NOT_ENOUGH_MEMORY, nullptr,
                                    FaultRepeat::FromThenOn);
        EXPECT_TRUE(Initialize());
        EXPECT_FALSE(IsMonitoring());
        for (const char* szThread : {"LUMPipeThreadObject", "LUMRegMonitorThreadObject"}) {
            EXPECT_EQ(1, Count(std::string("[EXCEPTION] Unable to create thread, Thread: ") + szThread +
                               ", Error: 8"));
        }
    }
    {
        const CFaultInjection fault(PlatformCall::CreateThread, 1, ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_FALSE(host->LUMEnableActiveRegistryMonitoring(true));
    }
    ClearLog();
    const CFaultInjection fault(PlatformCall::CreateEventW, 1, ERROR_NO_SYSTEM_RESOURCES, nullptr,
                                FaultRepeat::FromThenOn);
    Load();
    EXPECT_EQ(nullptr, host->m_pLUMPipeThreadObject);
    EXPECT_EQ(nullptr, host->m_pLUMRegMonitorThreadObject);
    EXPECT_EQ(1, Count("[EXCEPTION] Memory could not be allocated, Variable: m_pLUMPipeThreadObject"));
    EXPECT_TRUE(Initialize());
}

} // namespace
