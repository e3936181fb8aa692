#include "../chaining/ChainMachine.h"
#include "EventFile.h"
#include "Exceptions.h"
#include "FailingAllocation.h"
#include "LUMRegMonitorThreadObject.h"
#include "ServicePeriod.h"
#include "TestThread.h"

namespace {

constexpr WCHAR INTERVAL[] = TEXT("MonitorInterval");
constexpr DWORD NEVER_SECONDS = 3600;
constexpr DWORD REPORTS = 0xF0;
constexpr int TURNS = 20;

class RegistryMonitor : public CChainMachine
{
protected:
    /// A host's manager over the chain of the host and "msgina.dll", and a monitor of it.
    void Make(DWORD dwInterval)
    {
        // Reading a chain leaves many lines, which are slow to write under Wine.
        SetTraceMask(0);
        SetDword(OWN_KEY, INTERVAL, dwInterval);
        SetValues(ValuesOf("lum_gina.dll msgina.dll"));
        StartHost();
        own = Build();
        monitor = std::make_unique<CLUMRegMonitorThreadObject>(own.get(), m_pConfiguration.get(),
                                                               m_pWinlogon.get(), false);
    }

    /// What another installer does that takes Winlogon's value for itself.
    static void TakeHostOut() { SetString(WINLOGON_KEY, WINLOGON_GINA_DLL, TEXT("msgina.dll")); }
    static bool IsHostIn() { return GetValue(WINLOGON_KEY, WINLOGON_GINA_DLL) == "\"lum_gina.dll\""; }
    static bool IsHostInWithin(DWORD dwMilliseconds)
    {
        const DWORD dwBegin = GetTickCount();
        while (!IsHostIn() && GetTickCount() - dwBegin < dwMilliseconds) {
            Sleep(20);
        }
        return IsHostIn();
    }

    std::unique_ptr<CRegistryManager> own;
    std::unique_ptr<CLUMRegMonitorThreadObject> monitor;
};

TEST_F(RegistryMonitor, AndThePipeThreadTakeTheirPeriodsFromTheConfiguration)
{
    struct
    {
        const char* szName;
        bool (CLUMRegistry::*pfnGet)(DWORD*, bool);
    } const rows[] = {{"MonitorInterval", &CLUMRegistry::GetRegistryMonitorInterval},
                      {"PipeInterval", &CLUMRegistry::GetPipeInterval}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szName);
        const auto name = Widen(row.szName);
        SetTraceMask(0);
        SetDword(OWN_KEY, name.c_str(), 0);
        StartHost();
        const auto getPeriod = [&] { return GetServicePeriod(*m_pConfiguration, row.pfnGet, true); };
        EXPECT_EQ(5000u, getPeriod());
        for (const DWORD dwSeconds : {1u, 30u, 4294967u}) {
            SetDword(OWN_KEY, name.c_str(), dwSeconds);
            EXPECT_EQ(dwSeconds * 1000, getPeriod());
        }
        SetDword(OWN_KEY, name.c_str(), 0xFFFFFFFF);
        EXPECT_EQ(4294967000u, getPeriod()) << "what would not fit is not cut to something short";
        SetString(OWN_KEY, name.c_str(), TEXT("soon"));
        SetTraceMask(REPORTS);
        EXPECT_EQ(5000u, getPeriod()) << "not a number";
        EXPECT_EQ(1, Count(std::string("[EXCEPTION] Unable to read from registry, Registry Value: ") +
                           row.szName + ", Error: 0xea"));
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, OWN_KEY);
        StartHost();
        EXPECT_EQ(5000u, getPeriod()) << "no value at all";
    }
}

TEST_F(RegistryMonitor, SeesAChangeWithinAPeriodEachTime)
{
    Make(1);
    SetDword(OWN_KEY, TEXT("EventLog"), 1);
    ForgetEvents();
    ASSERT_TRUE(monitor->StartThread());
    for (int nChange = 0; nChange < 2; ++nChange) {
        TakeHostOut();
        EXPECT_TRUE(IsHostInWithin(20000)) << nChange;
    }
    EXPECT_TRUE(monitor->StopThread());
    EXPECT_EQ(Lines{"2 5 LUM GINA: msgina.dll | lum_gina.dll, msgina.dll"}, CollectEvents());
}

TEST_F(RegistryMonitor, ComparesALastTimeWhenItIsStopped)
{
    Make(NEVER_SECONDS);
    for (int nRun = 0; nRun < 2; ++nRun) {
        ASSERT_TRUE(monitor->StartThread());
        ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(monitor->StartEvent, 10000));
        TakeHostOut();
        EXPECT_FALSE(IsHostInWithin(200));
        EXPECT_TRUE(monitor->StopThread());
        EXPECT_TRUE(IsHostIn());
    }
    TakeHostOut();
    monitor->StartThread();
    monitor.reset();
    EXPECT_TRUE(IsHostIn()) << "also when it is destroyed";
}

TEST_F(RegistryMonitor, NeverUndoesWhatTheHostItselfChanges)
{
    Make(NEVER_SECONDS);
    CTestThread comparisons([this](CTestThread& self) {
        for (int n = 0; n < TURNS; ++n) {
            monitor->StartThread();
            monitor->StopThread();
        }
        self.SignalFinish();
    });
    ASSERT_TRUE(comparisons.StartThread());
    for (int n = 0; n < TURNS; ++n) {
        EXPECT_TRUE(own->InsertGinaIntoChainingList(TEXT("wpnGina.dll"), nullptr, false));
        EXPECT_TRUE(own->IsGinaInChainingList(TEXT("wpnGina.dll")));
        EXPECT_TRUE(own->RemoveGinaFromChainingList(TEXT("wpnGina.dll")));
        EXPECT_FALSE(own->IsGinaInChainingList(TEXT("wpnGina.dll")));
    }
    EXPECT_TRUE(comparisons.StopThread());
    EXPECT_EQ("lum_gina.dll msgina.dll", ChainOf(*own));
}

TEST_F(RegistryMonitor, GivesUpWhenItCannotReadTheChain)
{
    Make(NEVER_SECONDS);
    SetTraceMask(REPORTS);
    SetEvent(monitor->StopEvent);
    {
        // On this thread, where memory can be made to fail.
        const CFailingAllocation fault(0, CFailingAllocation::Kind::Nothrow);
        monitor->Thread();
    }
    const auto log = Log();
    ASSERT_FALSE(log.empty());
    EXPECT_EQ("[WARNING] An unhandled exception occurred", log.back());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(monitor->FinishEvent, 0)) << "and says that it has finished";
}

} // namespace
