#include <cstring>

#include "ForwardedCalls.h"
#include "PluginChain.h"

namespace {

std::string Unknown(const std::string& plugin)
{
    return "[EXCEPTION] Plugin has generated an unknown exception, Plugin: " + plugin;
}

std::string Null(const std::string& plugin)
{
    return "[EXCEPTION] Null function handle.  Unable to execute function call, Plugin: " + plugin;
}

constexpr StandinFailure FAILURES[] = {StandinFailure::ReadNull,     StandinFailure::DivideByZero,
                                       StandinFailure::ExhaustStack, StandinFailure::ExhaustStack,
                                       StandinFailure::Throw,        StandinFailure::StructuredException,
                                       StandinFailure::ThrowOwn};

/// Notes Winlogon's handle as the plugin sees it during a call.
struct CContextReader
{
    static void WINAPI Read(void* pReader, const PluginRecord*)
    {
        auto& self = *static_cast<CContextReader*>(pReader);
        self.hWlx = self.plugin.m_pGinaPluginContext->m_hWlx;
    }

    const CGinaObject& plugin;
    HANDLE hWlx;
};

void WINAPI CheckOffer(void*, const PluginRecord* pRecord)
{
    auto* pInfo = reinterpret_cast<CGinaPluginInfo*>(pRecord->argument[0]);
    EXPECT_STREQ("test_plugin_a.dll", Narrow(pInfo->m_szGinaDLL).c_str());
    EXPECT_EQ(WLX_VERSION_1_4, static_cast<int>(pInfo->m_dwWlxVersion));
    EXPECT_EQ(0x01000000u, pInfo->m_dwLUMVersion);
    pInfo->m_dwSpare1 = 5;
}

using GinaPluginObject = CPluginChain;

TEST_F(GinaPluginObject, NegotiationDecidesOnConstruction)
{
    struct
    {
        LONG nAnswer;
        DWORD dwWlxVersion;
        DWORD dwLUMVersion;
        const char* szError; ///< null when the plugin is taken
    } const rows[] = {
        {TRUE, 0, 0, nullptr},
        {0x101, 0, 0, nullptr},
        {TRUE, WLX_VERSION_1_0, 1, nullptr},
        {TRUE, 0x00020000, 0x01000000, nullptr},
        {FALSE, 0, 0, "0x0"},
        {0x100, 0, 0, "0x0"},
        {TRUE, 0x0000FFFF, 0, "0x1"},
        {TRUE, 0, 0x01000001, "0x1"},
        {-1, 0, 0xFFFFFFFF, "0xff"},
        {FALSE, 0x0000FFFF, 0x01000001, "0x0"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.nAnswer << " " << row.dwWlxVersion << " " << row.dwLUMVersion);
        a->Reset();
        a->SetAction(PluginCall::Negotiate, PluginAction::Answer, row.nAnswer);
        a->SetVersions(row.dwWlxVersion, row.dwLUMVersion);
        chain.Flush();
        ClearLog();
        if (row.szError == nullptr) {
            const CGinaPluginInfo& info = AddPlugin(a.GetName()).m_pGinaPluginContext->m_GinaPluginInfo;
            EXPECT_EQ(row.dwWlxVersion != 0 ? row.dwWlxVersion : WLX_VERSION_1_4, info.m_dwWlxVersion);
            EXPECT_EQ(row.dwLUMVersion != 0 ? row.dwLUMVersion : LUM_INTERFACE_VERSION, info.m_dwLUMVersion);
            EXPECT_EQ(Lines(), Log());
        } else {
            EXPECT_THROW(AddPlugin(a.GetName()), CFailedGinaNegotiationsException);
            EXPECT_EQ(1, Count(std::string("[EXCEPTION] Negotiation failed while loading gina dll, Error: ") +
                               row.szError));
        }
        EXPECT_EQ(Lines{"Negotiate"}, a.Calls());
    }
}

TEST_F(GinaPluginObject, AFailureInNegotiationMakesNoObject)
{
    for (const StandinFailure failure : FAILURES) {
        if (a->SetFailure(PluginCall::Negotiate, failure, 0xE0000001)) {
            ClearLog();
            EXPECT_THROW(AddPlugin(a.GetName()), CUnhandledPluginException);
            EXPECT_EQ(Lines{Unknown("test_plugin_a.dll")}, Log());
        }
    }
    EXPECT_EQ(0u, chain.m_dwCount);
}

TEST_F(GinaPluginObject, NegotiatedVersionDecidesWhatIsCalled)
{
    const CPluginDriver old(TEXT("test_plugin_1_3.dll"));
    old->SetVersions(WLX_VERSION_1_3, 0);
    CGinaObject& plugin = AddPlugin(old.GetName());
    AddGina();
    gina->Reset();
    ClearLog();
    EXPECT_THROW(plugin.ReconnectNotify(FirstNode(), CONTEXT), CNullFunctionHandleException);
    EXPECT_THROW(plugin.DisconnectNotify(FirstNode(), CONTEXT), CNullFunctionHandleException);
    EXPECT_THROW(plugin.GetConsoleSwitchCredentials(FirstNode(), CONTEXT, nullptr),
                 CNullFunctionHandleException);
    EXPECT_EQ(Lines(3, Null("test_plugin_1_3.dll")), Log());
    EXPECT_EQ(Lines(), gina.Calls());
    EXPECT_TRUE(plugin.RemoveStatusMessage(FirstNode(), CONTEXT));
    EXPECT_EQ(Lines{"WlxRemoveStatusMessage"}, gina.Calls());
}

TEST_F(GinaPluginObject, EveryCallTakesItsWayThroughTheChain)
{
    AddPlugin(a.GetName());
    AddPlugin(b.GetName());
    AddGina();
    for (const CChainedCall& call : CHAINED_CALLS) {
        SCOPED_TRACE(call.szName);
        gina->Reset();
        call.pfnCall(First(), FirstNode());
        EXPECT_EQ(call.szName, a.Calls().back());
        EXPECT_EQ(call.szName, b.Calls().back());
        ASSERT_EQ(Lines{std::string("Wlx") + call.szName}, gina.Calls());
        const StandinRecord& ofGina = *gina->GetRecord(0);
        for (const auto& [driver, pNode] : {std::pair(&a, FirstNode()), std::pair(&b, FirstNode()->pNext)}) {
            const PluginRecord& record = driver->LastRecord();
            EXPECT_EQ(reinterpret_cast<ULONG_PTR>(pNode), record.argument[0]);
            EXPECT_EQ(0, std::memcmp(record.argument + 1, ofGina.argument, sizeof(ofGina.argument)));
            EXPECT_EQ(ofGina.nResult, record.nResult);
        }
    }
}

TEST_F(GinaPluginObject, WithoutASuccessorThePluginIsNotCalled)
{
    CGinaObject& plugin = AddPlugin(a.GetName());
    for (const CChainedCall& call : CHAINED_CALLS) {
        EXPECT_THROW(call.pfnCall(plugin, FirstNode()), CUnexpectedEndOfListException) << call.szName;
    }
    EXPECT_EQ(19, Count("[EXCEPTION] Expected another gina node in list and found end of list, Plugin: "
                        "test_plugin_a.dll"));
    EXPECT_EQ(Lines{"Negotiate"}, a.Calls());
}

TEST_F(GinaPluginObject, ResultsComeBackInTheWidthThatTheyHave)
{
    CGinaObject& plugin = AddPlugin(a.GetName());
    AddGina();
    const auto answer = [this](PluginCall call, LONG nAnswer) {
        a->SetAction(call, PluginAction::Answer, nAnswer);
        ClearLog();
    };
    for (const LONG nAnswer : {0, 1, 0x100}) {
        answer(PluginCall::IsLockOk, nAnswer);
        EXPECT_EQ(nAnswer != 0, plugin.IsLockOk(FirstNode(), CONTEXT));
        EXPECT_EQ(nAnswer != 0 ? 0 : 1, Count(FAILED));
        // Only the low byte of these counts.
        answer(PluginCall::QueryPlugin, nAnswer);
        EXPECT_EQ(nAnswer == 1, plugin.QueryPlugin(nullptr, 1, 2, 3));
        EXPECT_EQ(nAnswer == 1 ? 0 : 1, Count(FAILED));
    }
    for (const int nAction : {WLX_SAS_ACTION_NONE, WLX_SAS_ACTION_LOGON, -5}) {
        answer(PluginCall::LoggedOnSAS, nAction);
        EXPECT_EQ(nAction, plugin.LoggedOnSAS(FirstNode(), CONTEXT, 1, nullptr));
        EXPECT_EQ(nAction == WLX_SAS_ACTION_NONE ? 1 : 0, Count(FAILED));
    }
    a->SetAction(PluginCall::IsLogoffOk, PluginAction::Change, FALSE);
    gina->Reset();
    EXPECT_FALSE(plugin.IsLogoffOk(FirstNode(), CONTEXT));
    EXPECT_EQ(Lines{"WlxIsLogoffOk"}, gina.Calls());
}

TEST_F(GinaPluginObject, InitializeHandsOverEverythingAndKeepsWinlogonsHandle)
{
    CContextReader reader{AddPlugin(a.GetName()), nullptr};
    a->SetHook(PluginCall::Initialize, CContextReader::Read, &reader);
    const auto place = [](ULONG_PTR n) { return reinterpret_cast<PVOID>(n); };
    PVOID pContext = nullptr;
    EXPECT_TRUE(First().Initialize(nullptr, 7, nullptr, place(3), place(4), place(5), &pContext, 8, 9));
    const ULONG_PTR expected[] = {0, 7, 0, 3, 4, 5, reinterpret_cast<ULONG_PTR>(&pContext), 8, 9};
    EXPECT_EQ(0, std::memcmp(expected, a.LastRecord().argument, sizeof(expected)));
    EXPECT_EQ(place(3), reader.hWlx) << "the plugin may look for it in its context already";
}

TEST_F(GinaPluginObject, FailuresCostOneCall)
{
    CGinaObject& plugin = AddPlugin(a.GetName());
    AddGina();
    for (const StandinFailure failure : FAILURES) {
        SCOPED_TRACE(static_cast<int>(failure));
        if (!a->SetFailure(PluginCall::IsLockOk, failure, 0xE0000001)) {
            continue;
        }
        a->SetFailure(PluginCall::DynamicUnload, failure, 0xE0000001);
        a->SetFailure(PluginCall::QueryPluginInfo, failure, 0xE0000001);
        a->SetFailure(PluginCall::Initialize, failure, 0xE0000001);
        ClearLog();
        EXPECT_THROW(plugin.IsLockOk(FirstNode(), CONTEXT), CUnhandledPluginException);
        EXPECT_THROW(plugin.DynamicUnload(), CUnhandledPluginException);
        EXPECT_THROW(plugin.QueryPluginInfo(nullptr), CUnhandledPluginException);
        EXPECT_THROW(plugin.Initialize(nullptr, 1, nullptr, CONTEXT, nullptr, nullptr, nullptr, 0, 0),
                     CUnhandledPluginException);
        EXPECT_EQ(Lines(4, Unknown("test_plugin_a.dll")), Log());
        EXPECT_TRUE(plugin.IsLogoffOk(FirstNode(), CONTEXT));
    }
    // What a plugin hands on can be wild: nothing of the caller's is lost but the call.
    a->Reset();
    EXPECT_THROW(plugin.IsLockOk(reinterpret_cast<GinaNode*>(0x40), CONTEXT), CUnhandledPluginException);
    EXPECT_THROW(plugin.QueryPluginInfo(reinterpret_cast<CGinaPluginInfo*>(0x40)), CUnhandledPluginException);
    EXPECT_EQ(Lines(), a.Calls());
}

TEST_F(GinaPluginObject, ExceptionsFromBelow)
{
    // A plugin whose version does without ReconnectNotify, and a GINA that is not the last.
    b->SetVersions(WLX_VERSION_1_3, 0);
    AddPlugin(a.GetName());
    AddPlugin(b.GetName());
    AddGina();
    AddGina();
    ClearLog();
    EXPECT_THROW(First().ReconnectNotify(FirstNode(), CONTEXT), CNullFunctionHandleException);
    EXPECT_EQ(Lines{Null("test_plugin_b.dll")}, Log()) << "unchanged, and written once";
    ClearLog();
    EXPECT_THROW(First().IsLockOk(FirstNode(), CONTEXT), CUnhandledPluginException);
    EXPECT_EQ((Lines{"[EXCEPTION] Another gina node was unexpectantly found at the end of the list., Plugin: "
                     "standin_gina.dll",
                     Unknown("test_plugin_b.dll"), Unknown("test_plugin_a.dll")}),
              Log());
    EXPECT_FALSE(a.LastRecord().bReturned) << "the exception went through the plugin's frames";
}

TEST_F(GinaPluginObject, TheRecordIsWhatNegotiationLeftAndAnswersComeFromThePlugin)
{
    a->SetHook(PluginCall::Negotiate, CheckOffer, nullptr);
    CGinaObject& plugin = AddPlugin(a.GetName());
    EXPECT_EQ(5u, plugin.m_pGinaPluginContext->m_GinaPluginInfo.m_dwSpare1);
    CGinaPluginInfo info(LUM_GINA_APP, LUM_GINA_MTM);
    EXPECT_TRUE(plugin.QueryPluginInfo(&info));
    EXPECT_EQ(nullptr, info.m_szGinaDLL) << "the host adds nothing to what the plugin fills in";
    EXPECT_EQ(reinterpret_cast<ULONG_PTR>(&info), a.LastRecord().argument[0]);
    plugin.DynamicUnload();
    a->SetHook(PluginCall::Negotiate, nullptr, nullptr);
    EXPECT_TRUE(plugin.Negotiate(1, nullptr, &info));
    EXPECT_EQ((Lines{"Negotiate", "QueryPluginInfo", "DynamicUnload", "Negotiate"}), a.Calls());
}

} // namespace
