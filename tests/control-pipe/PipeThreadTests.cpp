#include <algorithm>

#include "Exceptions.h"
#include "PipeMachine.h"
#include "Thread.h"

// The thread, at its own pace.

namespace {

class PipeThread : public CPipeMachine
{
protected:
    PipeThread() { SetDword(OWN_KEY, TEXT("PipeInterval"), 1); }

    /// The host sees PipeInterval only when it is there from the beginning.
    void Restart()
    {
        host.reset();
        Load();
        EXPECT_TRUE(Initialize());
        ClearLog();
    }
    CLUMPipeThreadObject& Thread() { return *host->m_pLUMPipeThreadObject; }
};

/// The lines between two that are named, these included.
Lines Between(const Lines& log, const std::string& first, const std::string& last)
{
    const auto begin = std::find(log.begin(), log.end(), first);
    const auto end = std::find(begin, log.end(), last);
    return end == log.end() ? log : Lines(begin, end + 1);
}

TEST_F(PipeThread, TracesAnExchangeInOrder)
{
    Restart();
    SetTraceMask(LEVEL_NOTIFICATION | LEVEL_DEBUG | LEVEL_WARNING | LEVEL_EXCEPTION);
    ASSERT_TRUE(Thread().StartThread());
    ExpectService("nothing");
    ExpectLine("[NOTIFICATION] Client has disconnected from LUM GINA Pipe");
    EXPECT_TRUE(Thread().StopThread());
    EXPECT_EQ(Thread().m_hPipe, INVALID_HANDLE_VALUE);
    EXPECT_EQ(Between(Log(), "[NOTIFICATION] Client has connected to LUM GINA Pipe",
                      "[NOTIFICATION] Client has disconnected from LUM GINA Pipe"),
              (Lines{"[NOTIFICATION] Client has connected to LUM GINA Pipe",
                     "[NOTIFICATION] Received request: LUM_VERIFY_LUM_GINA",
                     "[NOTIFICATION] Client has disconnected from LUM GINA Pipe"}));
}

TEST_F(PipeThread, TakesAClientEachPeriod)
{
    Restart();
    ASSERT_TRUE(Thread().StartThread());
    ExpectService("nothing");
    const DWORD dwFirst = GetTickCount();
    ExpectService("the first");
    EXPECT_GT(GetTickCount() - dwFirst, 500u);
    const DWORD dwStop = GetTickCount();
    EXPECT_TRUE(Thread().StopThread());
    EXPECT_LT(GetTickCount() - dwStop, 900u) << "no need to wait for the end of the period";
}

TEST_F(PipeThread, ServesThePipeOnceOnly)
{
    Restart();
    SetTraceMask(LEVEL_DEBUG);
    ASSERT_TRUE(Thread().StartThread());
    EXPECT_TRUE(Thread().StopThread());
    ASSERT_TRUE(Thread().StartThread());
    ExpectLine("[DEBUG] Could not connect to pipe, error 0x6");
    EXPECT_TRUE(Thread().StopThread());
}

/// What a plugin does that does not come back before it is let go.
struct CStay
{
    CHappening inside;
    CHappening end;
};

void WINAPI Stay(void* pStay, const PluginRecord*)
{
    static_cast<CStay*>(pStay)->inside.Happen();
    static_cast<CStay*>(pStay)->end.Wait();
}

TEST_F(PipeThread, InsideAPluginDoesNotKeepTheMachineFromShuttingDown)
{
    SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 0);
    Restart();
    CStay stay;
    plugins[0]->SetHook(PluginCall::QueryPluginInfo, Stay, &stay);
    CRawClient client;
    client.Send("\x70" + Fixed("test_plugin_a.dll"));
    stay.inside.Wait();
    const DWORD dwStart = GetTickCount();
    host->LUMWlxShutdown(CONTEXT, 0);
    EXPECT_LT(GetTickCount() - dwStart, 20000u);
    EXPECT_EQ(
        Count("[WARNING] Thread has not finished in time. It is left alone, Variable: LUMPipeThreadObject"),
        1);
    EXPECT_TRUE(Thread().IsAlive());
    EXPECT_FALSE(host->m_pLUMRegMonitorThreadObject->m_bRunning) << "the other one is stopped all the same";
    stay.end.Happen();
    EXPECT_TRUE(host->StopThreads());
    EXPECT_FALSE(Thread().m_bRunning);
}

TEST_F(PipeThread, NeedsWhatItServesAndAPipe)
{
    using Object = CLUMPipeThreadObject;
    CLUMObject* pObject = host->m_pLUMObject;
    CLUMRegistry* pRegistry = host->m_pLUMRegistry;
    ClearLog();
    EXPECT_THROW(Object(nullptr, nullptr, nullptr, false), CBadArgException);
    EXPECT_THROW(Object(pObject, nullptr, nullptr, false), CBadArgException);
    EXPECT_THROW(Object(pObject, host.get(), nullptr, false), CBadArgException);
    // The host has it.
    EXPECT_THROW(Object(pObject, host.get(), pRegistry, false), CLUMPipeThreadObjectInitException);
    EXPECT_EQ(Log(), (Lines{"[EXCEPTION] A bad argument was provided, Argument: pLUMObject",
                            "[EXCEPTION] A bad argument was provided, Argument: pLUMGina",
                            "[EXCEPTION] A bad argument was provided, Argument: pLUMRegistry",
                            "[EXCEPTION] CreateNamedPipe function call failed, Error: 0xe7",
                            "[EXCEPTION] Unable to instantiate LUMPipeThreadObject object"}));
    EXPECT_TRUE(host->m_pLUMPipeThreadObject != nullptr);
}

TEST_F(PipeThread, RunsFromTheFirstInitialisationToShutdown)
{
    SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 0);
    Restart();
    EXPECT_TRUE(Thread().m_bRunning);
    ExpectService("initialisation");
    host->LUMWlxShutdown(CONTEXT, 0);
    EXPECT_FALSE(Thread().m_bRunning);
    EXPECT_EQ(CControlClient().Verify(), ControlStatus::NoServer);
    Restart();
    EXPECT_FALSE(Thread().m_bRunning) << "the second instance leaves it to the first";
}

} // namespace
