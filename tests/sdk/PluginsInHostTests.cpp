#include <utility>

#include "PluginsInHost.h"
#include "TraceLog.h"

namespace {

TEST_F(PluginsInHost, AreInitialisedInOrderAndCalledInOrder)
{
    SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 4);
    Load();
    ASSERT_TRUE(Initialize());
    for (int n = 0; n < 3; ++n) {
        const PluginRecord& record = plugins[n].LastRecord();
        EXPECT_EQ(PluginCall::Initialize, record.call);
        EXPECT_EQ(4 + n, record.nOrder) << "behind three negotiations";
        EXPECT_EQ(reinterpret_cast<ULONG_PTR>(host->m_pLUMObject), record.argument[0]);
        EXPECT_EQ(5u, record.argument[1]) << "instance count";
        EXPECT_EQ(0u, record.argument[7] | record.argument[8]) << "load flags";
    }
    plugins[1]->SetAction(PluginCall::LoggedOnSAS, PluginAction::Answer, WLX_SAS_ACTION_LOGOFF);
    gina->Reset();
    EXPECT_EQ(WLX_SAS_ACTION_LOGOFF, host->LUMWlxLoggedOnSAS(CONTEXT, WLX_SAS_TYPE_CTRL_ALT_DEL, nullptr));
    EXPECT_EQ(7, plugins[0].LastRecord().nOrder);
    EXPECT_EQ(8, plugins[1].LastRecord().nOrder);
    EXPECT_EQ(8, m_nCounter) << "what a plugin answers itself goes no further";
    EXPECT_EQ(Lines(), gina.Calls());
}

TEST_F(PluginsInHost, ThoseThatRefuseInitialisationGoAndOneThatFailsEndsIt)
{
    enum Answer
    {
        ACCEPTS,
        REFUSES,
        FAULTS,
        THROWS,
        ANSWERS
    };
    // Every answer of each of the three.
    for (int nCase = 0; nCase < ANSWERS * ANSWERS * ANSWERS; ++nCase) {
        const int answers[] = {nCase % ANSWERS, nCase / ANSWERS % ANSWERS, nCase / (ANSWERS * ANSWERS)};
        SCOPED_TRACE(testing::Message() << answers[0] << answers[1] << answers[2]);
        Lines chain;
        int nInitialised = 0;
        bool bEnded = false;
        for (int n = 0; n < 3; ++n) {
            plugins[n]->Reset();
            plugins[n]->SetAction(PluginCall::Initialize, PluginAction::Answer, answers[n] != REFUSES);
            plugins[n]->SetFailure(PluginCall::Initialize,
                                   answers[n] == FAULTS   ? StandinFailure::ReadNull
                                   : answers[n] == THROWS ? StandinFailure::Throw
                                                          : StandinFailure::None,
                                   0);
            nInitialised += bEnded ? 0 : 1;
            if (bEnded || answers[n] != REFUSES) {
                chain.push_back(Narrow(plugins[n].GetName()));
            }
            bEnded = bEnded || answers[n] == FAULTS || answers[n] == THROWS;
        }
        chain.push_back("standin_gina.dll");
        Load();
        ClearLog();
        gina->Reset();
        EXPECT_EQ(!bEnded, Initialize());
        EXPECT_EQ(chain, Chain());
        for (int n = 0; n < 3; ++n) {
            EXPECT_EQ(n < nInitialised ? (Lines{"Negotiate", "Initialize"}) : Lines{"Negotiate"},
                      plugins[n].Calls());
        }
        EXPECT_EQ(bEnded ? Lines() : Lines{"WlxInitialize"}, gina.Calls());
        Lines lines(static_cast<std::size_t>(std::count(answers, answers + nInitialised, REFUSES)), FAILED);
        if (bEnded) {
            lines.insert(lines.end(), {"[EXCEPTION] Plugin has generated an unknown exception, Plugin: " +
                                           Narrow(plugins[nInitialised - 1].GetName()),
                                       "[EXCEPTION] An unhandled exception occurred",
                                       "[WARNING] An unhandled exception occurred", FAILED});
        }
        EXPECT_EQ(lines, Log());
        // Those that are left work.
        for (const CPluginDriver& plugin : plugins) {
            plugin->Reset();
        }
        EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
        for (int n = 0; n < 3; ++n) {
            EXPECT_EQ(n < nInitialised && answers[n] == REFUSES ? Lines() : Lines{"IsLockOk"},
                      plugins[n].Calls());
        }
    }
}

/// A plugin that writes where it may only read.
struct CScribbler
{
    /// In LUMNegotiate: the record is the plugin's own, and stays there.
    static void WINAPI Remember(void* pScribbler, const PluginRecord* pRecord)
    {
        auto& self = *static_cast<CScribbler*>(pScribbler);
        self.pRecord = reinterpret_cast<CGinaPluginInfo*>(pRecord->argument[0]);
        if (self.call == PluginCall::Negotiate) {
            self.Write(*self.pRecord);
        }
    }

    static void WINAPI WriteToRecord(void* pScribbler, const PluginRecord*)
    {
        auto& self = *static_cast<CScribbler*>(pScribbler);
        self.Write(*self.pRecord);
    }

    /// In a forwarded call: what its node leads to, and the next one.
    static void WINAPI WriteToObjects(void* pScribbler, const PluginRecord* pRecord)
    {
        auto& self = *static_cast<CScribbler*>(pScribbler);
        auto* pNode = reinterpret_cast<GinaNode*>(pRecord->argument[0]);
        for (GinaNode* pEach : {pNode, pNode->pNext}) {
            CGinaObject& object = *pEach->m_pItem;
            CGinaPluginContext& context = *object.m_pGinaPluginContext;
            self.Write(context.m_GinaPluginInfo);
            self.Write(context);
            context.m_hDLLInstance = reinterpret_cast<HINSTANCE>(ULONG_PTR(16));
            object.m_pGinaPluginContext.Release();
            object.m_pGinaPluginContext.Reset(reinterpret_cast<CGinaPluginContext*>(ULONG_PTR(16)));
            self.Write(static_cast<CGlobalObject&>(object));
            self.Write(*pEach);
        }
    }

    void Write(CGlobalObject& object) const
    {
        object.szAPP = origin.szAPP;
        object.szMTM = origin.szMTM;
    }

    CMessageOrigin origin;
    PluginCall call;
    CGinaPluginInfo* pRecord = nullptr;
};

const CMessageOrigin SCRIBBLES[] = {
    {reinterpret_cast<const WCHAR*>(ULONG_PTR(8)), reinterpret_cast<const WCHAR*>(ULONG_PTR(8))},
    {nullptr, nullptr},
    {TEXT("OTHER"), TEXT("SOFTWARE\\Other")}};

TEST_F(PluginsInHost, OneThatWritesOverItsRecordGoesAndStaysAsAnyOther)
{
    SetTraceMask(0xFFF & ~(LEVEL_ENTRY | LEVEL_EXIT));
    for (const CMessageOrigin& origin : SCRIBBLES) {
        for (const PluginCall call : {PluginCall::Negotiate, PluginCall::Initialize}) {
            for (const bool bAccepts : {true, false}) {
                CScribbler scribbler{origin, call};
                plugins[1]->Reset();
                plugins[1]->SetHook(PluginCall::Initialize, CScribbler::WriteToRecord, &scribbler);
                plugins[1]->SetHook(PluginCall::Negotiate, CScribbler::Remember, &scribbler);
                plugins[1]->SetAction(call, PluginAction::Answer, bAccepts);
                Load();
                EXPECT_TRUE(Initialize());
                EXPECT_EQ(bAccepts ? 4u : 3u, Chain().size());
                EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
                EXPECT_EQ(bAccepts, host->LUMRemovePluginDynamic(TEXT("test_plugin_b.dll")));
                EXPECT_TRUE(host->LUMAddPluginDynamic(TEXT("test_plugin_b.dll")) == bAccepts);
                host.reset();
                EXPECT_EQ(Count("[CONSTRUCTION EXIT ] CGinaPluginContext::CGinaPluginContext"),
                          Count("[DESTRUCTION EXIT ] CGinaPluginContext::~CGinaPluginContext"));
                EXPECT_EQ(0, Count("[WARNING] Unable to delete variable, Variable: m_pItem"));
                EXPECT_EQ(Lines(), InternalLog());
            }
        }
    }
}

TEST_F(PluginsInHost, OneThatWritesOverNodesAndObjectsCostsNoCall)
{
    SetTraceMask(0xFFF);
    for (const CMessageOrigin& origin : SCRIBBLES) {
        CScribbler scribbler{origin, PluginCall::IsLockOk};
        Load();
        EXPECT_TRUE(Initialize());
        plugins[0]->SetHook(PluginCall::IsLockOk, CScribbler::WriteToObjects, &scribbler);
        EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
        EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
        plugins[1]->SetHook(PluginCall::IsLockOk, CScribbler::WriteToObjects, &scribbler);
        EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
        for (const CPluginDriver& plugin : plugins) {
            plugin->SetHook(PluginCall::IsLockOk, nullptr, nullptr);
            EXPECT_TRUE(host->LUMRemovePluginDynamic(plugin.GetName()));
            EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT));
        }
        host.reset();
        EXPECT_EQ(0, Count("[WARNING] Unable to delete variable, Variable: m_pItem"));
        EXPECT_EQ(0, Count("[EXCEPTION] Failed to free gina dll library, Error: 0x6"));
        SetString(OWN_KEY, TEXT("Plugins"), TEXT("test_plugin_a.dll,test_plugin_b.dll,test_plugin_c.dll"));
    }
}

TEST_F(PluginsInHost, AFaultOfTheHostEndsTheInitialisationAndLeavesNoCallInFlight)
{
    Load();
    // As a plugin can write it.
    CGinaObject*& pItem = host->m_pGinaObjectList->m_pHead->pNext->m_pItem;
    CGinaObject* const pKept = std::exchange(pItem, reinterpret_cast<CGinaObject*>(ULONG_PTR(8)));
    EXPECT_FALSE(CallWithinHost([this] { return Initialize(); }));
    pItem = pKept;
    EXPECT_EQ(1, Count("[WARNING] An unhandled exception occurred"));
    EXPECT_TRUE(host->LUMRemovePluginDynamic(TEXT("test_plugin_a.dll")));
    EXPECT_TRUE(Initialize());
}

} // namespace
