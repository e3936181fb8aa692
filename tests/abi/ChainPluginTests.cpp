// The library itself, as Winlogon loads it, with a plugin of the other compiler in front of the stand-in
// GINA.

#include <cstdlib>
#include <memory>

#include <windows.h>
#include <winwlx.h>

#include "ChainPlugin.h"
#include "Exceptions.h"
#include "GinaPluginObject.h"
#include "Runner.h"
#include "TestMachine.h"
#include "Winlogon.h"

namespace {

constexpr char PLUGIN[] = "abi_chain_plugin.dll";
constexpr char FAILED[] = "abi_chain_plugin failed inside the call";
constexpr char LEFT_OUT[] = "abi_chain_plugin.dll cannot be used and is left out; the trace log says why";
constexpr AbiDeed FAILURES[] = {ABI_THROW, ABI_READ_NULL, ABI_DIVIDE_BY_ZERO, ABI_EXHAUST_STACK};

struct CAbiCall
{
    AbiCall id;
    std::string name;
};
const CAbiCall CALLS[] = {
#define ABI_ROW(SLOT, NAME) {ABI_##NAME, #NAME},
    ABI_FORWARDED_CALLS(ABI_ROW)
#undef ABI_ROW
};

class AbiChain : public CTestMachine
{
protected:
    AbiChain()
    {
        SetString(OWN_KEY, TEXT("Plugins"), Widen(PLUGIN).c_str());
        SetString(OWN_KEY, TEXT("GinaDLL"), TEXT("standin_gina.dll"));
        SetString(DEBUG_KEY, TEXT("LUM_GINA"), Widen(log).c_str());
        SetTraceMask(LEVEL_ENTRY | LEVEL_EXIT | LEVEL_CONSTRUCTION_EXIT | LEVEL_WARNING);
        state = {};
    }
    ~AbiChain() override
    {
        runner.reset();
        state = {};
        FreeLibrary(hPlugin);
        std::remove(log.c_str());
    }

    void Load()
    {
        runner.reset();
        runner = std::make_unique<CRunner>("lum_gina.dll", "standin_gina.dll", WLX_VERSION_1_4, log);
        runner->Run(ParseDay("Attach", "day").at(0));
    }
    CStepReport Live(const std::string& step)
    {
        CStepReport report = runner->Run(ParseDay("Attach\n" + step, "day").at(1));
        state.nCall = 0;
        return report;
    }
    void Start()
    {
        Load();
        EXPECT_EQ(Lines(), Live("WlxNegotiate").differences);
        EXPECT_EQ(Lines(), Live("WlxInitialize").differences);
    }

    /// What the plugin does in the next call.
    void Tell(AbiCall call, AbiDeed deed, int nAnswer = 0)
    {
        state.nCall = call;
        state.deed = deed;
        state.nAnswer = nAnswer;
        state.nCaught = 0;
        state.nAlive = 0;
    }

    /// Calls check(call of the plugin, call of Winlogon's) for each of the 19 forwarded ones.
    template <typename Check>
    static void ForEachForwarded(Check check)
    {
        for (const CAbiCall& call : CALLS) {
            SCOPED_TRACE(call.name);
            check(call.id, *FindCall("Wlx" + call.name));
        }
    }

    static AbiChainState& FindState(HMODULE hPlugin)
    {
        const FARPROC pfn = hPlugin != nullptr ? GetProcAddress(hPlugin, "AbiChain") : nullptr;
        if (pfn == nullptr) {
            std::abort();
        }
        return *reinterpret_cast<PFN_ABI_CHAIN>(reinterpret_cast<void*>(pfn))();
    }

    const std::string log = std::string(std::getenv("TEMP")) + "\\abi_chain.log";
    const HMODULE hPlugin = LoadLibraryW(Widen(PLUGIN).c_str());
    AbiChainState& state = FindState(hPlugin);
    std::unique_ptr<CRunner> runner;
};

TEST_F(AbiChain, PassesEveryCallOnAndKnowsItsContext)
{
    Start();
    ForEachForwarded([&](AbiCall, const CWlxCall& call) {
        state.hPlugin = nullptr;
        const CStepReport report = Live(call.szName);
        EXPECT_EQ(Lines(), report.differences);
        EXPECT_EQ("abi_chain_plugin > standin_gina", report.way);
        EXPECT_EQ(hPlugin, state.hPlugin);
    });
    EXPECT_EQ(GetModuleHandleW(TEXT("lum_gina.dll")), state.hHost);
    EXPECT_EQ(Winlogon::GetValue(WinlogonValue::WlxHandle), reinterpret_cast<ULONG_PTR>(state.hWlx));
    EXPECT_EQ(PLUGIN, Narrow(state.szDLL));
    EXPECT_EQ(WLX_VERSION_1_4, static_cast<int>(state.dwNegotiated));
    EXPECT_EQ(0, state.nAlive);
}

TEST_F(AbiChain, AFailureCostsTheCallAndNothingElse)
{
    Start();
    for (const AbiDeed deed : FAILURES) {
        ForEachForwarded([&](AbiCall id, const CWlxCall& call) {
            Tell(id, deed);
            EXPECT_EQ(Lines{FAILED}, Live(call.szName).differences) << "the default came back";
            EXPECT_EQ(deed == ABI_THROW ? 0 : 1, state.nAlive);
        });
        ForEachForwarded([&](AbiCall, const CWlxCall& call) {
            EXPECT_EQ(Lines(), Live(call.szName).differences) << "after deed " << deed;
        });
    }
}

TEST_F(AbiChain, ChangesResultsAndLivesWithFailuresFromBelow)
{
    Start();
    struct
    {
        AbiDeed deed;
        bool bGinaFails;
        bool bPluginAnswers;
        int nCaught;
    } const rows[] = {
        {ABI_ANSWER, false, true, 0},
        {ABI_CHANGE, false, true, 0},
        {ABI_CATCH_AND_RETHROW, true, false, 1},
        {ABI_CATCH_AND_ANSWER, true, true, 1},
        {ABI_TRY_TWICE, true, false, 1},
        {ABI_CATCH_AND_RETHROW, false, false, 0},
    };
    for (const auto& row : rows) {
        ForEachForwarded([&](AbiCall id, const CWlxCall& call) {
            // Neither the stand-in's answer nor what a failure gives.
            const int nAnswer = call.result == ResultKind::Bool ? row.bGinaFails : 11;
            Tell(id, row.deed, nAnswer);
            const CStepReport report =
                Live(call.szName + std::string(row.bGinaFails ? " gina fails READ_NULL" : ""));
            EXPECT_EQ(Lines(), report.differences) << "deed " << row.deed;
            EXPECT_EQ(row.nCaught, state.nCaught);
            EXPECT_EQ(0, state.nAlive);
            // A call without a result cannot be changed, only ended.
            if (call.result != ResultKind::None) {
                const std::string answer =
                    call.GetResultCodes().Describe(nAnswer) + (row.bPluginAnswers ? ", " : "");
                EXPECT_EQ(row.bPluginAnswers, report.cameBack.rfind(answer, 0) == 0) << report.cameBack;
                EXPECT_EQ(row.bPluginAnswers,
                          report.cameBack.find(", by abi_chain_plugin") != std::string::npos);
            }
        });
    }
}

TEST_F(AbiChain, OneThatRefusesOrFailsInNegotiationIsLeftOut)
{
    for (const AbiDeed deed : {ABI_ANSWER, ABI_THROW, ABI_READ_NULL, ABI_DIVIDE_BY_ZERO, ABI_EXHAUST_STACK}) {
        Load();
        Tell(ABI_Negotiate, deed);
        EXPECT_EQ(Lines{LEFT_OUT}, Live("WlxNegotiate").differences) << deed;
        EXPECT_EQ("standin_gina", Live("WlxIsLockOk").way);
    }
}

TEST_F(AbiChain, AnswersQueriesAndOwnsNoStringOfTheRecord)
{
    CGinaObject& plugin =
        *new CGinaPluginObject(LUM_GINA_APP, LUM_GINA_MTM, reinterpret_cast<HINSTANCE>(0x1000),
                               Widen(PLUGIN).c_str(), LUM_INTERFACE_VERSION, WLX_VERSION_1_4);
    for (const AbiDeed deed : FAILURES) {
        CGinaPluginInfo info(LUM_GINA_APP, LUM_GINA_MTM);
        Tell(ABI_QueryPlugin, deed);
        EXPECT_THROW(plugin.QueryPlugin(&info, 1, 2, 3), CUnhandledPluginException);
        Tell(ABI_QueryPluginInfo, deed);
        EXPECT_THROW(plugin.QueryPluginInfo(&info), CUnhandledPluginException);
        Tell(ABI_DynamicUnload, deed);
        EXPECT_THROW(plugin.DynamicUnload(), CUnhandledPluginException);

        Tell(ABI_QueryPlugin, ABI_PASS_ON);
        EXPECT_TRUE(plugin.QueryPlugin(&info, 1, 2, 3));
        plugin.DynamicUnload();
        // The second time, the plugin releases what it allocated the first time; the record the last.
        EXPECT_TRUE(plugin.QueryPluginInfo(&info));
        EXPECT_TRUE(plugin.QueryPluginInfo(&info));
        EXPECT_EQ("Of the other compiler", Narrow(info.m_szFriendlyName));
        EXPECT_EQ(PLUGIN, Narrow(info.m_szGinaDLL));
    }
    const CGinaPluginInfo& own = plugin.m_pGinaPluginContext->m_GinaPluginInfo;
    EXPECT_EQ("Of the other compiler", Narrow(own.m_szFriendlyName));
    plugin.DeletingDestructor(1);
}

} // namespace
