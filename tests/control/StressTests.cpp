#include <algorithm>
#include <cstdlib>
#include <deque>
#include <random>

#include "CountingPlugin.h"
#include "HostMachine.h"
#include "Thread.h"

// Winlogon's calls and the control channel's operations at the same time, on real threads. How much of it:
// LUM_STRESS_OPERATIONS, 2000 control operations unless it is set.

namespace {

constexpr const char* PLUGINS[] = {"counting_plugin_a.dll", "counting_plugin_b.dll", "counting_plugin_c.dll",
                                   "counting_plugin_d.dll", "counting_plugin_e.dll"};
constexpr const char* GINA = "standin_gina.dll";

int GetOperationCount()
{
    const char* szCount = std::getenv("LUM_STRESS_OPERATIONS");
    return szCount != nullptr ? std::atoi(szCount) : 2000;
}

class CJournal : public IPluginJournal
{
public:
    CPluginCounts* BeginPlugin() override
    {
        const CCriticalSection::CLock lock(m_lock);
        if (++m_nBegun % 16 == 0) {
            return nullptr;
        }
        return &m_counts.emplace_back();
    }

    /// Once no plugin is called any more: the number of those that are still loaded.
    std::size_t CheckCounts() const
    {
        std::size_t nLoaded = 0;
        for (const CPluginCounts& counts : m_counts) {
            EXPECT_EQ(counts.nEntries, counts.nExits);
            EXPECT_EQ(0, counts.nTooLate);
            nLoaded += counts.bUnloaded ? 0 : 1;
        }
        return nLoaded;
    }

private:
    CCriticalSection m_lock;
    int m_nBegun = 0;
    std::deque<CPluginCounts> m_counts;
};

/// A call that Winlogon makes, and those that it makes from within.
class CWinlogonCall : public ICallTrail
{
public:
    CWinlogonCall(CLUMGina& host, int nNested) : m_host(host), m_nNested(nNested) {}

    void Run()
    {
        if (m_nNested % 2 == 0) {
            EXPECT_TRUE(m_host.LUMWlxIsLockOk(static_cast<ICallTrail*>(this)));
        } else {
            EXPECT_EQ(WLX_SAS_ACTION_LOGOFF,
                      m_host.LUMWlxLoggedOnSAS(static_cast<ICallTrail*>(this), 1, nullptr));
        }
    }

    void Visit(const void* pNode) override
    {
        EXPECT_EQ(0, std::count(m_visited.begin(), m_visited.end(), pNode)) << "twice in one call";
        m_visited.push_back(pNode);
        if (m_nNested > 0) {
            --m_nNested;
            CWinlogonCall(m_host, m_nNested).Run();
        }
    }

private:
    CLUMGina& m_host;
    int m_nNested;
    std::vector<const void*> m_visited;
};

/// The control channel: makes operations at random and knows what must become of them.
class CControlChannel
{
public:
    CControlChannel(CLUMGina& host, unsigned uSeed) : m_host(host), m_random(uSeed) {}

    void Operate()
    {
        const std::string name = PLUGINS[Random(std::size(PLUGINS))];
        switch (Random(6)) {
        case 0:
            return Add(name);
        case 1:
            return Remove(name);
        case 2:
            return Move(name, &CLUMObject::LUMIncreasePriority, -1);
        case 3:
            return Move(name, &CLUMObject::LUMDecreasePriority, 1);
        case 4:
            return Query(name);
        default:
            EXPECT_EQ(IsLoaded(name), m_host.m_pLUMObject->LUMIsGinaInPluginList(Widen(name).c_str()));
        }
    }

    /// What is loaded, and what is configured, after all.
    const Lines& GetLoaded() const { return m_loaded; }
    const Lines& GetConfigured() const { return m_configured; }
    /// Changes that gave up because calls went on.
    int GetBusyCount() const { return m_nBusy; }

private:
    std::size_t Random(std::size_t nBelow) { return m_random() % nBelow; }
    Lines::iterator Find(const std::string& name)
    {
        return std::find(m_loaded.begin(), m_loaded.end(), name);
    }
    bool IsLoaded(const std::string& name) { return Find(name) != m_loaded.end(); }

    void Add(const std::string& name)
    {
        if (!IsLoaded(name) && m_host.LUMAddPluginDynamic(Widen(name).c_str())) {
            m_loaded.push_back(name);
            m_configured.push_back(name);
        }
    }

    void Remove(const std::string& name)
    {
        const bool bLoaded = IsLoaded(name);
        const bool bRemoved = m_host.LUMRemovePluginDynamic(Widen(name).c_str());
        EXPECT_TRUE(bLoaded || !bRemoved);
        m_nBusy += bLoaded && !bRemoved ? 1 : 0;
        if (bRemoved) {
            m_loaded.erase(Find(name));
            m_configured.erase(std::find(m_configured.begin(), m_configured.end(), name));
        }
    }

    void Move(const std::string& name, bool (CLUMObject::*pfnMove)(const CGinaPluginInfo&), int nPlaces)
    {
        CGinaPluginInfo record(LUM_GINA_APP, LUM_GINA_MTM);
        record.SetGinaDLL(Widen(name).c_str());
        const auto nFrom = Find(name) - m_loaded.begin();
        const auto nTo = nFrom + nPlaces;
        const auto nLoaded = static_cast<std::ptrdiff_t>(m_loaded.size());
        const bool bCanMove = nFrom < nLoaded && nTo >= 0 && nTo < nLoaded;
        const bool bMoved = (m_host.m_pLUMObject->*pfnMove)(record);
        EXPECT_TRUE(bCanMove || !bMoved);
        m_nBusy += bCanMove && !bMoved ? 1 : 0;
        if (bMoved) {
            std::swap(m_loaded[static_cast<std::size_t>(nFrom)], m_loaded[static_cast<std::size_t>(nTo)]);
        }
    }

    void Query(const std::string& name)
    {
        CGinaPluginInfo record(LUM_GINA_APP, LUM_GINA_MTM);
        CGinaPluginInfo target(LUM_GINA_APP, LUM_GINA_MTM);
        target.SetGinaDLL(Widen(name).c_str());
        EXPECT_EQ(IsLoaded(name), m_host.m_pLUMObject->LUMQueryPlugin(&record, &target, 1, 2, 3));
        EXPECT_EQ(IsLoaded(name), m_host.m_pLUMObject->LUMQueryPluginInfo(target.m_szGinaDLL, record));
        EXPECT_TRUE(m_host.m_pLUMObject->LUMGetPassthroughGina(record));
        EXPECT_EQ(GINA, Narrow(record.m_szGinaDLL));
    }

    CLUMGina& m_host;
    std::minstd_rand m_random;
    Lines m_loaded;
    Lines m_configured;
    int m_nBusy = 0;
};

class Stress : public CHostMachine
{
protected:
    Stress()
    {
        SetTraceMask(0);
        SetString(OWN_KEY, TEXT("GinaDLL"), Widen(GINA).c_str());
        Load();
        EXPECT_TRUE(host->LUMWlxInitialize(nullptr, static_cast<IPluginJournal*>(&journal), nullptr, m_table,
                                           &m_pContext));
        ForgetRecords();
    }

    ~Stress() override { host.reset(); }

    /// The GINA records every call; only between calls.
    void ForgetRecords()
    {
        gina->Reset();
        gina->SetResult(StandinCall::WlxLoggedOnSAS, WLX_SAS_ACTION_LOGOFF);
    }

    /// One call of Winlogon's after the other, some with others from within.
    void Call(int nNumber)
    {
        CWinlogonCall(*host, nNumber % 4).Run();
        if (nNumber % 256 == 0) {
            ForgetRecords();
        }
    }

    void ExpectChain(const CControlChannel& control) const
    {
        Lines expected = control.GetLoaded();
        expected.push_back(GINA);
        EXPECT_EQ(expected, Chain());
        std::string plugins;
        for (const std::string& name : control.GetConfigured()) {
            plugins += (plugins.empty() ? "" : ",") + name;
        }
        EXPECT_EQ('"' + plugins + '"', GetValue(OWN_KEY, TEXT("Plugins")));
        EXPECT_EQ(control.GetLoaded().size(), journal.CheckCounts());
    }

    CJournal journal;
};

TEST_F(Stress, CallsAndChangesMeetOnAllThreads)
{
    CControlChannel control(*host, 1);
    CHappening done;
    CThread channel([&] {
        for (int n = GetOperationCount(); n > 0 && !HasFailure(); --n) {
            control.Operate();
        }
        done.Happen();
    });
    // At each stop the monitor compares the chain once more.
    CThread monitor([&] {
        while (!done.HasHappened()) {
            EXPECT_TRUE(host->LUMEnableActiveRegistryMonitoring(true));
            EXPECT_TRUE(host->LUMEnableActiveRegistryMonitoring(false));
        }
    });
    int nCalls = 0;
    while (!done.HasHappened()) {
        Call(nCalls++);
    }
    channel.Join();
    monitor.Join();
    Call(0);
    ExpectChain(control);
    // A machine may be too busy to let a call end in time, but not as a rule.
    EXPECT_LE(control.GetBusyCount(), GetOperationCount() / 100);
    RecordProperty("calls", nCalls);
    RecordProperty("busy", control.GetBusyCount());
}

TEST_F(Stress, ShutdownIsPromptAtAnyMoment)
{
    CControlChannel control(*host, 2);
    CHappening done;
    CThread channel([&] {
        while (!done.HasHappened()) {
            control.Operate();
        }
    });
    for (int n = GetOperationCount() / 20; n > 0; --n) {
        CWinlogonCall call(*host, 0);
        const DWORD dwStart = GetTickCount();
        host->LUMWlxShutdown(static_cast<ICallTrail*>(&call), 0);
        EXPECT_LT(GetTickCount() - dwStart, CCallGate::CHANGE_MILLISECONDS);
        Sleep(static_cast<DWORD>(n % 3));
    }
    done.Happen();
    channel.Join();
    ExpectChain(control);
}

} // namespace
