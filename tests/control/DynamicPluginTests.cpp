#include <functional>

#include "FailingAllocation.h"
#include "Thread.h"
#include "../sdk/PluginsInHost.h"

namespace {

constexpr const char* BUSY = "[WARNING] Calls are under way. The GINA object list was not changed";

void WINAPI SeeOffer(void* pdwOffered, const PluginRecord* pRecord)
{
    const auto* pInfo = reinterpret_cast<const CGinaPluginInfo*>(pRecord->argument[0]);
    *static_cast<DWORD*>(pdwOffered) = pInfo->m_dwWlxVersion;
}

/// A host that runs with two plugins, a and b; c comes later.
class DynamicPlugins : public PluginsInHost
{
protected:
    DynamicPlugins()
    {
        SetString(OWN_KEY, TEXT("Plugins"), TEXT("test_plugin_a.dll,test_plugin_b.dll"));
        SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 6);
        Load();
        EXPECT_TRUE(Initialize());
        for (const CPluginDriver& plugin : plugins) {
            plugin->Reset();
        }
        gina->Reset();
        ClearLog();
    }

    bool Add(const WCHAR* szPlugin) { return host->LUMAddPluginDynamic(szPlugin); }
    bool Remove(const WCHAR* szPlugin) { return host->LUMRemovePluginDynamic(szPlugin); }
    static std::string Configured() { return GetValue(OWN_KEY, TEXT("Plugins")); }

    static constexpr const char* CONFIGURED = "\"test_plugin_a.dll,test_plugin_b.dll\"";
    const Lines CHAIN{"test_plugin_a.dll", "test_plugin_b.dll", "standin_gina.dll"};
};

TEST_F(DynamicPlugins, OneIsAddedBehindTheOthers)
{
    host->m_dwNegotiatedWlxVersion = WLX_VERSION_1_3;
    DWORD dwOffered = 0;
    plugins[2]->SetHook(PluginCall::Negotiate, SeeOffer, &dwOffered);
    EXPECT_TRUE(Add(TEXT("test_plugin_c.dll")));
    EXPECT_EQ((Lines{"test_plugin_a.dll", "test_plugin_b.dll", "test_plugin_c.dll", "standin_gina.dll"}),
              Chain());
    EXPECT_EQ("\"test_plugin_a.dll,test_plugin_b.dll,test_plugin_c.dll\"", Configured());
    EXPECT_EQ(Lines{FAILED}, Log()) << "it was not listed";
    EXPECT_EQ(WLX_VERSION_1_3, dwOffered) << "what was agreed with Winlogon";
    EXPECT_EQ((Lines{"Negotiate", "Initialize"}), plugins[2].Calls());
    const auto place = [](const void* p) { return reinterpret_cast<ULONG_PTR>(p); };
    const ULONG_PTR expected[] = {place(host->m_pLUMObject), 7, 0, place(WLX), 0, place(m_table), 0, 1, 1};
    const PluginRecord initialize = plugins[2].LastRecord();
    for (int n = 0; n < 9; ++n) {
        EXPECT_EQ(expected[n], initialize.argument[n]) << n;
    }
    EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
    EXPECT_EQ(PluginCall::IsLockOk, plugins[2].LastRecord().call);
    EXPECT_EQ(Lines{"WlxIsLockOk"}, gina.Calls());
}

TEST_F(DynamicPlugins, OneThatCannotBeAddedLeavesNoTrace)
{
    constexpr WCHAR C[] = TEXT("test_plugin_c.dll");
    constexpr char UNKNOWN[] = "Plugin has generated an unknown exception, Plugin: test_plugin_c.dll";
    const auto refuse = [&](PluginCall call) {
        return [=, this] { plugins[2]->SetAction(call, PluginAction::Answer, FALSE); };
    };
    const auto fail = [&](StandinFailure failure) {
        return [=, this] { plugins[2]->SetFailure(PluginCall::Initialize, failure, 0); };
    };
    struct
    {
        const WCHAR* szPlugin;
        std::function<void()> prepare;
        std::string exception; ///< empty when it refuses to be initialised
        Lines calls;           ///< that c has received
    } const rows[] = {
        {TEXT("nowhere.dll"), [] {}, "Unable to load DLL, Filename: nowhere.dll, Error: 0x7e", {}},
        {TEXT("test_plugin_no_unload.dll"),
         [] {},
         "Unable to load function from DLL, Function: LUMDynamicUnload, Error: 0x7f",
         {}},
        {nullptr, [] {}, "A bad argument was provided, Argument: szGinaDLLName", {}},
        {TEXT(""), [] {}, "A bad argument was provided, Argument: szGinaDLLName", {}},
        {C,
         refuse(PluginCall::Negotiate),
         "Negotiation failed while loading gina dll, Error: 0x0",
         {"Negotiate"}},
        {C, refuse(PluginCall::Initialize), "", {"Negotiate", "Initialize"}},
        {C, fail(StandinFailure::ReadNull), UNKNOWN, {"Negotiate", "Initialize"}},
        {C, fail(StandinFailure::Throw), UNKNOWN, {"Negotiate", "Initialize"}},
    };
    for (const auto& row : rows) {
        plugins[2]->Reset();
        row.prepare();
        ClearLog();
        EXPECT_FALSE(Add(row.szPlugin));
        EXPECT_EQ(row.exception.empty() ? Lines{FAILED} : (Lines{"[EXCEPTION] " + row.exception, UNHANDLED}),
                  Log());
        EXPECT_EQ(row.calls, plugins[2].Calls());
        EXPECT_EQ(CHAIN, Chain());
        EXPECT_EQ(CONFIGURED, Configured());
    }
}

TEST_F(DynamicPlugins, ANodeThatCannotBeMadeLeavesTheNameConfigured)
{
    SetTraceMask(0);
    plugins[2]->SetAction(PluginCall::Initialize, PluginAction::PassOn, TRUE);
    // Until it is the node that there is no memory for; before that, nothing is left of the plugin.
    for (int nBefore = 0; Configured() == CONFIGURED; ++nBefore) {
        const CFailingAllocation noMemory(nBefore, CFailingAllocation::Kind::Nothrow);
        if (Add(TEXT("test_plugin_c.dll"))) {
            ASSERT_TRUE(Remove(TEXT("test_plugin_c.dll")));
        }
        EXPECT_EQ(CHAIN, Chain());
    }
    EXPECT_EQ("\"test_plugin_a.dll,test_plugin_b.dll,test_plugin_c.dll\"", Configured());
    EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
    EXPECT_TRUE(Add(TEXT("test_plugin_c.dll")));
}

TEST_F(DynamicPlugins, SurvivesAnyFailedAllocation)
{
    SetTraceMask(0);
    for (int nBefore = 0; nBefore < 60; ++nBefore) {
        bool bAdded = false;
        bool bRemoved = false;
        {
            const CFailingAllocation noMemory(nBefore);
            bAdded = Add(TEXT("test_plugin_c.dll"));
        }
        EXPECT_EQ(bAdded ? 4u : 3u, host->m_pGinaObjectList->m_dwCount);
        {
            const CFailingAllocation noMemory(nBefore);
            bRemoved = Remove(TEXT("test_plugin_c.dll"));
        }
        EXPECT_TRUE(bAdded || !bRemoved);
        if (host->m_pGinaObjectList->m_dwCount == 4) {
            EXPECT_TRUE(Remove(TEXT("test_plugin_c.dll"))) << nBefore;
        }
        EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
        SetString(OWN_KEY, TEXT("Plugins"), TEXT("test_plugin_a.dll,test_plugin_b.dll"));
    }
}

TEST_F(DynamicPlugins, OneIsToldBeforeItGoes)
{
    EXPECT_TRUE(Remove(TEXT("TEST_PLUGIN_A.DLL")));
    EXPECT_EQ((Lines{"test_plugin_b.dll", "standin_gina.dll"}), Chain());
    EXPECT_EQ("\"test_plugin_b.dll\"", Configured());
    EXPECT_EQ(Lines{"DynamicUnload"}, plugins[0].Calls());
    EXPECT_TRUE(Log().empty());
    EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
    EXPECT_EQ(1u, plugins[0]->GetRecordCount());
    // The configuration does not matter to what is loaded, nor the other way round.
    SetString(OWN_KEY, TEXT("Plugins"), TEXT("a.dll"));
    EXPECT_TRUE(Remove(TEXT("test_plugin_b.dll")));
    EXPECT_EQ(Lines{"standin_gina.dll"}, Chain());
    EXPECT_EQ("\"a.dll\"", Configured());
}

TEST_F(DynamicPlugins, OneThatFailsWhenItIsToldStaysAtItsPlace)
{
    ASSERT_TRUE(Add(TEXT("test_plugin_c.dll")));
    const Lines chain = Chain();
    for (const auto& plugin : plugins) {
        for (const StandinFailure failure : {StandinFailure::ReadNull, StandinFailure::Throw}) {
            plugin->Reset();
            plugin->SetFailure(PluginCall::DynamicUnload, failure, 0);
            ClearLog();
            EXPECT_FALSE(Remove(plugin.GetName()));
            EXPECT_EQ((Lines{"[EXCEPTION] Plugin has generated an unknown exception, Plugin: " +
                                 Narrow(plugin.GetName()),
                             UNHANDLED}),
                      Log());
            EXPECT_EQ(chain, Chain());
            EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
            EXPECT_EQ(PluginCall::IsLockOk, plugin.LastRecord().call);
        }
    }
    EXPECT_EQ("\"test_plugin_a.dll,test_plugin_b.dll,test_plugin_c.dll\"", Configured());
}

TEST_F(DynamicPlugins, WithoutThePassthroughGinaEveryCallFails)
{
    EXPECT_TRUE(Remove(TEXT("standin_gina.dll")));
    EXPECT_EQ((Lines{"test_plugin_a.dll", "test_plugin_b.dll"}), Chain());
    EXPECT_EQ(CONFIGURED, Configured());
    ClearLog();
    EXPECT_FALSE(host->LUMWlxIsLockOk(CONTEXT));
    EXPECT_EQ(1, Count("[EXCEPTION] Expected another gina node in list and found end of list, Plugin: "
                       "test_plugin_b.dll"));
    EXPECT_TRUE(Remove(TEXT("test_plugin_a.dll")));
    EXPECT_TRUE(Remove(TEXT("test_plugin_b.dll")));
    EXPECT_TRUE(Add(TEXT("test_plugin_c.dll"))) << "into an empty list";
    EXPECT_EQ(Lines{"test_plugin_c.dll"}, Chain());
}

TEST_F(DynamicPlugins, AHostWithoutAMemberFails)
{
    const auto without = [&](auto& pMember) {
        auto* const pKept = pMember;
        pMember = nullptr;
        ClearLog();
        EXPECT_FALSE(Add(TEXT("test_plugin_c.dll")));
        EXPECT_EQ(Lines{UNHANDLED}, Log());
        EXPECT_EQ(Lines(), plugins[2].Calls());
        pMember = pKept;
    };
    without(host->m_pGinaObjectList);
    without(host->m_pLUMRegistry);
    without(host->m_pGinaContext);
    without(host->m_pWinlogonObject);
    CLUMRegistry* const pRegistry = host->m_pLUMRegistry;
    host->m_pLUMRegistry = nullptr;
    EXPECT_FALSE(Remove(TEXT("test_plugin_a.dll")));
    host->m_pLUMRegistry = pRegistry;
    EXPECT_EQ(CHAIN, Chain());
    EXPECT_EQ(Lines(), plugins[0].Calls());
}

/// A call of Winlogon's that stays in plugin a until it is let go.
class CStayingCall
{
public:
    CStayingCall(CLUMGina& host, const CPluginDriver& plugin) : m_plugin(plugin)
    {
        plugin->SetHook(PluginCall::LoggedOnSAS, Stay, this);
        m_pWinlogon = std::make_unique<CThread>([&] {
            m_nResult =
                host.LUMWlxLoggedOnSAS(reinterpret_cast<PVOID>(1), WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr);
        });
        m_inside.Wait();
    }
    ~CStayingCall() { End(); }

    /// Gives its result.
    int End()
    {
        m_plugin->SetHook(PluginCall::LoggedOnSAS, nullptr, nullptr);
        m_end.Happen();
        m_pWinlogon->Join();
        return m_nResult;
    }

private:
    static void WINAPI Stay(void* pCall, const PluginRecord*)
    {
        static_cast<CStayingCall*>(pCall)->m_inside.Happen();
        static_cast<CStayingCall*>(pCall)->m_end.Wait();
    }

    const CPluginDriver& m_plugin;
    CHappening m_inside;
    CHappening m_end;
    int m_nResult = 0;
    std::unique_ptr<CThread> m_pWinlogon;
};

/// How long f() takes.
template <typename F>
DWORD Measure(F f)
{
    const DWORD dwStart = GetTickCount();
    f();
    return GetTickCount() - dwStart;
}

// Far less than a call that stays for minutes, far more than a busy machine needs.
constexpr DWORD PROMPT = CCallGate::CHANGE_MILLISECONDS * 9 / 10;

TEST_F(DynamicPlugins, ACallThatStaysHoldsUpNothingButChanges)
{
    gina->SetResult(StandinCall::WlxLoggedOnSAS, WLX_SAS_ACTION_LOGOFF);
    CStayingCall call(*host, plugins[0]);
    CGinaPluginInfo record(LUM_GINA_APP, LUM_GINA_MTM);
    record.SetGinaDLL(TEXT("test_plugin_b.dll"));
    EXPECT_GT(PROMPT, Measure([&] {
                  EXPECT_TRUE(host->m_pLUMObject->LUMQueryPlugin(nullptr, &record, 0, 0, 0));
                  EXPECT_TRUE(host->m_pLUMObject->LUMIsGinaInPluginList(TEXT("test_plugin_a.dll")));
                  EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
                  EXPECT_TRUE(Add(TEXT("test_plugin_c.dll")));
              }));
    EXPECT_GT(PROMPT, Measure([&] { host->LUMWlxShutdown(CONTEXT, 0); }));
    const Lines chain{"test_plugin_a.dll", "test_plugin_b.dll", "test_plugin_c.dll", "standin_gina.dll"};
    EXPECT_EQ(chain, Chain());

    // The one that the call is in, one that it is going to pass through, and moves.
    ClearLog();
    EXPECT_FALSE(Remove(TEXT("test_plugin_a.dll")));
    EXPECT_FALSE(Remove(TEXT("test_plugin_b.dll")));
    EXPECT_EQ((Lines{BUSY, BUSY}), Log());
    EXPECT_FALSE(host->m_pLUMObject->LUMIncreasePriority(record));
    EXPECT_FALSE(host->m_pLUMObject->LUMDecreasePriority(record));
    EXPECT_EQ(chain, Chain());
    EXPECT_EQ("\"test_plugin_a.dll,test_plugin_b.dll,test_plugin_c.dll\"", Configured());
    for (const CPluginDriver& plugin : plugins) {
        EXPECT_NE(PluginCall::DynamicUnload, plugin.LastRecord().call);
    }

    EXPECT_EQ(WLX_SAS_ACTION_LOGOFF, call.End());
    EXPECT_EQ(PluginCall::LoggedOnSAS, plugins[2].LastRecord().call) << "added before the call passed on";
    EXPECT_TRUE(Remove(TEXT("test_plugin_a.dll")));
    EXPECT_TRUE(host->m_pLUMObject->LUMDecreasePriority(record));
}

/// What a plugin finds when it uses the host from within a call of its own.
void WINAPI ChangeFromWithin(void* pHost, const PluginRecord*)
{
    auto& host = *static_cast<CLUMGina*>(pHost);
    CGinaPluginInfo record(LUM_GINA_APP, LUM_GINA_MTM);
    record.SetGinaDLL(TEXT("test_plugin_b.dll"));
    EXPECT_GT(PROMPT, Measure([&] {
                  EXPECT_FALSE(host.LUMRemovePluginDynamic(TEXT("test_plugin_a.dll")));
                  EXPECT_FALSE(host.LUMRemovePluginDynamic(TEXT("standin_gina.dll")));
                  EXPECT_FALSE(host.m_pLUMObject->LUMIncreasePriority(record));
                  EXPECT_TRUE(host.m_pLUMObject->LUMQueryPlugin(nullptr, &record, 0, 0, 0));
                  EXPECT_TRUE(host.LUMWlxIsLogoffOk(reinterpret_cast<PVOID>(1)));
                  EXPECT_TRUE(host.LUMAddPluginDynamic(TEXT("test_plugin_c.dll")));
              }));
}

TEST_F(DynamicPlugins, AChangeFromWithinACallFailsAtOnce)
{
    plugins[1]->SetHook(PluginCall::IsLockOk, ChangeFromWithin, host.get());
    EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
    EXPECT_EQ(3, Count(BUSY));
    EXPECT_EQ((Lines{"test_plugin_a.dll", "test_plugin_b.dll", "test_plugin_c.dll", "standin_gina.dll"}),
              Chain());
    EXPECT_EQ(PluginCall::IsLockOk, plugins[2].LastRecord().call) << "behind the one that added it";
    plugins[1]->SetHook(PluginCall::IsLockOk, nullptr, nullptr);

    // The walk of an initialisation, and a query, are calls like any other.
    plugins[1]->SetHook(PluginCall::QueryPluginInfo, ChangeFromWithin, host.get());
    CGinaPluginInfo record(LUM_GINA_APP, LUM_GINA_MTM);
    ASSERT_TRUE(Remove(TEXT("test_plugin_c.dll")));
    EXPECT_TRUE(host->m_pLUMObject->LUMQueryPluginInfo(TEXT("test_plugin_b.dll"), record));
    EXPECT_EQ(6, Count(BUSY));
}

/// Stays in a call on the control channel's thread while Winlogon goes on.
void WINAPI CallMeanwhile(void* pHost, const PluginRecord* pRecord)
{
    auto& host = *static_cast<CLUMGina*>(pHost);
    PVOID const pContext = reinterpret_cast<PVOID>(1);
    EXPECT_GT(PROMPT, Measure([&] {
                  CThread([&] {
                      EXPECT_TRUE(host.LUMWlxIsLockOk(pContext));
                      host.LUMWlxShutdown(pContext, 0);
                  }).Join();
              }))
        << "in " << static_cast<DWORD>(pRecord->call);
}

TEST_F(DynamicPlugins, WhatAPluginDoesWhenItComesAndGoesHoldsNobodyUp)
{
    for (const PluginCall call : {PluginCall::Negotiate, PluginCall::Initialize, PluginCall::QueryPluginInfo})
    {
        plugins[2]->SetHook(call, CallMeanwhile, host.get());
    }
    CGinaPluginInfo record(LUM_GINA_APP, LUM_GINA_MTM);
    EXPECT_TRUE(Add(TEXT("test_plugin_c.dll")));
    EXPECT_TRUE(host->m_pLUMObject->LUMQueryPluginInfo(TEXT("test_plugin_c.dll"), record));
}

/// Waits for a call of Winlogon's, which waits for it.
void WINAPI LetWinlogonCall(void* pHost, const PluginRecord*)
{
    CThread([=] {
        EXPECT_TRUE(static_cast<CLUMGina*>(pHost)->LUMWlxIsLockOk(reinterpret_cast<PVOID>(1)));
    }).Join();
}

TEST_F(DynamicPlugins, APluginThatHangsWhenItIsToldToGoHoldsWinlogonUpForASecondAtMost)
{
    plugins[1]->SetHook(PluginCall::DynamicUnload, LetWinlogonCall, host.get());
    EXPECT_GT(2 * CCallGate::CHANGE_MILLISECONDS,
              Measure([&] { EXPECT_TRUE(Remove(TEXT("test_plugin_b.dll"))); }));
    EXPECT_EQ((Lines{"DynamicUnload", "IsLockOk"}), plugins[1].Calls());
    EXPECT_EQ((Lines{"test_plugin_a.dll", "standin_gina.dll"}), Chain());
}

} // namespace
