#include <algorithm>

#include "Exceptions.h"
#include "LUMThreadObjects.h"
#include "PipeMachine.h"
#include "Thread.h"

// The thread, at its own pace.

namespace {

class PipeThread : public CPipeMachine
{
protected:
    PipeThread() { SetDword(OWN_KEY, TEXT("PipeInterval"), 1); }

    /// A host whose threads run if it is the first instance. It sees PipeInterval only when that is there
    /// from the beginning.
    void Start(DWORD dwInstances)
    {
        SetDword(VOLATILE_KEY, TEXT("InstanceCount"), dwInstances);
        host.reset();
        Load();
        EXPECT_TRUE(Initialize());
    }
    CLUMPipeThreadObject& Thread() { return *host->m_pLUMPipeThreadObject; }
};

TEST_F(PipeThread, TakesAClientEachPeriodFromTheFirstInitialisationToShutdown)
{
    SetTraceMask(LEVEL_NOTIFICATION);
    Start(0);
    EXPECT_TRUE(Thread().m_bRunning);
    ExpectService("initialisation");
    const DWORD dwFirst = GetTickCount();
    ExpectService("the first");
    EXPECT_GT(GetTickCount() - dwFirst, 500u);
    const DWORD dwStop = GetTickCount();
    host->LUMWlxShutdown(CONTEXT, 0);
    EXPECT_LT(GetTickCount() - dwStop, 900u) << "no need to wait for the end of the period";
    EXPECT_FALSE(Thread().m_bRunning);
    EXPECT_EQ(Thread().m_hPipe, INVALID_HANDLE_VALUE);
    EXPECT_EQ(CControlClient().Verify(), ControlStatus::NoServer);

    const Lines exchange = {"[NOTIFICATION] Client has connected to LUM GINA Pipe",
                            "[NOTIFICATION] Received request: LUM_VERIFY_LUM_GINA",
                            "[NOTIFICATION] Client has disconnected from LUM GINA Pipe"};
    const Lines log = Log();
    const auto begin = std::search(log.begin(), log.end(), exchange.begin(), exchange.end());
    EXPECT_NE(log.end(), std::search(begin + 1, log.end(), exchange.begin(), exchange.end())) << RawLog();

    // Started again it has no pipe any more.
    SetTraceMask(LEVEL_DEBUG);
    ASSERT_TRUE(Thread().StartThread());
    ExpectLine("[DEBUG] Could not connect to pipe, error 0x6");
    EXPECT_TRUE(Thread().StopThread());
    Start(1);
    EXPECT_FALSE(Thread().m_bRunning) << "the second instance leaves it to the first";
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
    Start(0);
    ClearLog();
    Thread().m_dwLongestStop = 300;
    CStay stay;
    plugins[0]->SetHook(PluginCall::QueryPluginInfo, Stay, &stay);
    CRawClient client;
    client.Send("\x70" + Fixed("test_plugin_a.dll"));
    stay.inside.Wait();
    const DWORD dwStart = GetTickCount();
    host->LUMWlxShutdown(CONTEXT, 0);
    EXPECT_LT(GetTickCount() - dwStart, 5000u);
    EXPECT_EQ(
        Count("[WARNING] Thread has not finished in time. It is left alone, Variable: LUMPipeThreadObject"),
        1);
    EXPECT_TRUE(Thread().m_bRunning);
    EXPECT_FALSE(host->m_pLUMRegMonitorThreadObject->m_bRunning) << "the other one is stopped all the same";
    stay.end.Happen();
    Thread().m_dwLongestStop = INFINITE;
    EXPECT_TRUE(host->StopThreads());
    EXPECT_FALSE(Thread().m_bRunning);
}

} // namespace
