#include <functional>

#include "../sdk/PluginsInHost.h"
#include "LUMThreadObjects.h"
#include "ResourceObject.h"

namespace {

/// A record as a client names a plugin by it.
class CNamed : public CGinaPluginInfo
{
public:
    explicit CNamed(const std::string& name) : CGinaPluginInfo(LUM_GINA_APP, LUM_GINA_MTM)
    {
        if (!name.empty()) {
            SetGinaDLL(Widen(name).c_str());
        }
    }
};

class LUMObject : public PluginsInHost
{
protected:
    LUMObject()
    {
        Load();
        EXPECT_TRUE(Initialize());
        for (const CPluginDriver& plugin : plugins) {
            plugin->Reset();
            plugin->SetCounter(&m_nCounter);
        }
        ClearLog();
    }

    CLUMObject& object() { return *host->m_pLUMObject; }

    /// The chain by the last letters of the names: "abcS".
    std::string Order() const
    {
        std::string order;
        for (const std::string& name : Chain()) {
            order += name == "standin_gina.dll" ? 'S' : name[name.size() - 5];
        }
        return order;
    }
};

TEST_F(LUMObject, AndTheThreadsNeedWhatTheyServe)
{
    CRegistryManager* pManager = host->m_pRegistryManager;
    CLUMRegistry* pRegistry = host->m_pLUMRegistry;
    CWinlogonRegistry* pWinlogon = host->m_pWinlogonRegistry;
    const auto makeObject = [](auto... pServed) { CLUMObject(LUM_GINA_APP, LUM_GINA_MTM, pServed...); };
    const auto makePipe = [](auto... pServed) { CLUMPipeThreadObject(pServed..., false); };
    const auto makeMonitor = [](auto... pServed) { CLUMRegMonitorThreadObject(pServed..., false); };
    struct
    {
        const char* szMissing;
        std::function<void()> make;
    } const rows[] = {
        {"pRegistryManager", [&] { makeObject(nullptr, nullptr, nullptr); }},
        {"pLUMRegistry", [&] { makeObject(pManager, nullptr, nullptr); }},
        {"pGinaObjectList", [&] { makeObject(pManager, nullptr, pRegistry); }},
        {"pLUMObject", [&] { makePipe(nullptr, nullptr, nullptr); }},
        {"pLUMGina", [&] { makePipe(&object(), nullptr, nullptr); }},
        {"pLUMRegistry", [&] { makePipe(&object(), host.get(), nullptr); }},
        {"pRegistryManager", [&] { makeMonitor(nullptr, pRegistry, pWinlogon); }},
        {"pLUMRegistry", [&] { makeMonitor(pManager, nullptr, pWinlogon); }},
        {"pWinlogonRegistry", [&] { makeMonitor(pManager, pRegistry, nullptr); }},
        {"hInst", [] { CResourceObject(LUM_GINA_APP, LUM_GINA_MTM, nullptr, 0, 0); }},
        {"hInstance", [] { CGinaContext(LUM_GINA_APP, LUM_GINA_MTM, nullptr); }},
    };
    for (const auto& row : rows) {
        ClearLog();
        EXPECT_THROW(row.make(), CBadArgException) << row.szMissing;
        EXPECT_EQ(1,
                  Count(std::string("[EXCEPTION] A bad argument was provided, Argument: ") + row.szMissing));
    }
    // The host has the pipe.
    EXPECT_THROW(makePipe(&object(), host.get(), pRegistry), CLUMPipeThreadObjectInitException);
    EXPECT_EQ(1, Count("[EXCEPTION] CreateNamedPipe function call failed, Error: 0xe7"));
    EXPECT_EQ(1, Count("[EXCEPTION] Unable to instantiate LUMPipeThreadObject object"));
}

TEST_F(LUMObject, PrioritiesMovePluginsAmongThemselves)
{
    constexpr auto UP = &CLUMObject::LUMIncreasePriority;
    constexpr auto DOWN = &CLUMObject::LUMDecreasePriority;
    // Each starts with what the one before has left.
    struct
    {
        bool (CLUMObject::*pfnMove)(const CGinaPluginInfo&);
        const char* szName;
        bool bMoved;
        const char* szOrder;
        int nWarnings; ///< of the operation and of the list
    } const rows[] = {{UP, "test_plugin_b.dll", true, "bacS", 0},
                      {UP, "test_plugin_b.dll", false, "bacS", 2},
                      {DOWN, "TEST_PLUGIN_B.DLL", true, "abcS", 0},
                      {DOWN, "test_plugin_b.dll", true, "acbS", 0},
                      {DOWN, "test_plugin_b.dll", false, "acbS", 1},
                      {UP, "standin_gina.dll", false, "acbS", 1},
                      {DOWN, "standin_gina.dll", false, "acbS", 1},
                      {UP, "test_plugin_b.dll", true, "abcS", 0},
                      {DOWN, "test_plugin_a.dll", true, "bacS", 0},
                      {UP, "nowhere.dll", false, "bacS", 2},
                      {DOWN, "nowhere.dll", false, "bacS", 2},
                      {UP, "", false, "bacS", 2},
                      {DOWN, "", false, "bacS", 2}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.szName << " to " << row.szOrder);
        ClearLog();
        EXPECT_EQ(row.bMoved, (object().*row.pfnMove)(CNamed(row.szName)));
        EXPECT_EQ(row.szOrder, Order());
        EXPECT_EQ(Lines(row.nWarnings, FAILED), Log());
        EXPECT_TRUE(host->LUMWlxIsLockOk(CONTEXT)) << "the chain is whole";
    }
    EXPECT_EQ("\"test_plugin_a.dll,test_plugin_b.dll,test_plugin_c.dll\"",
              GetValue(OWN_KEY, TEXT("Plugins")));
    gina->Reset();
    EXPECT_TRUE(host->LUMWlxIsLogoffOk(CONTEXT));
    EXPECT_LT(plugins[1].LastRecord().nOrder, plugins[0].LastRecord().nOrder);
    EXPECT_EQ(Lines{"WlxIsLogoffOk"}, gina.Calls());
}

TEST_F(LUMObject, APluginAloneStaysWhereItIs)
{
    ASSERT_TRUE(host->LUMRemovePluginDynamic(TEXT("test_plugin_b.dll")));
    ASSERT_TRUE(host->LUMRemovePluginDynamic(TEXT("test_plugin_c.dll")));
    EXPECT_FALSE(object().LUMIncreasePriority(CNamed("test_plugin_a.dll")));
    EXPECT_FALSE(object().LUMDecreasePriority(CNamed("test_plugin_a.dll")));
    EXPECT_EQ("aS", Order());
}

TEST_F(LUMObject, FindsWhatIsLoaded)
{
    SetString(OWN_KEY, TEXT("Plugins"), TEXT("new.dll"));
    for (const WCHAR* szName :
         {TEXT("test_plugin_c.dll"), TEXT("Test_Plugin_A.DLL"), TEXT("standin_gina.dll")}) {
        EXPECT_TRUE(object().LUMIsGinaInPluginList(szName));
    }
    EXPECT_TRUE(Log().empty());
    for (const WCHAR* szName : {TEXT("new.dll"), TEXT(""), static_cast<const WCHAR*>(nullptr)}) {
        ClearLog();
        EXPECT_FALSE(object().LUMIsGinaInPluginList(szName));
        EXPECT_EQ(Lines(2, FAILED), Log());
    }
}

void WINAPI WriteOrigin(void*, const PluginRecord* pRecord)
{
    auto* pInfo = reinterpret_cast<CGinaPluginInfo*>(pRecord->argument[0]);
    pInfo->szAPP = pInfo->szMTM = reinterpret_cast<const WCHAR*>(ULONG_PTR(8));
}

TEST_F(LUMObject, QueriesReachThePluginTheyName)
{
    CNamed record("asked");
    plugins[1]->SetHook(PluginCall::QueryPlugin, WriteOrigin, nullptr);
    plugins[2]->SetHook(PluginCall::QueryPluginInfo, WriteOrigin, nullptr);
    EXPECT_TRUE(object().LUMQueryPlugin(
        &record, &static_cast<const CGinaPluginInfo&>(CNamed("TEST_PLUGIN_B.dll")), 1, 2, 0xFFFFFFFF));
    const PluginRecord& asked = plugins[1].LastRecord();
    EXPECT_EQ(reinterpret_cast<ULONG_PTR>(static_cast<CGinaPluginInfo*>(&record)), asked.argument[0]);
    EXPECT_EQ(1u, asked.argument[1]);
    EXPECT_EQ(2u, asked.argument[2]);
    EXPECT_EQ(0xFFFFFFFFu, asked.argument[3]);
    EXPECT_TRUE(object().LUMQueryPluginInfo(TEXT("test_plugin_c.dll"), record));
    EXPECT_EQ(PluginCall::QueryPluginInfo, plugins[2].LastRecord().call);
    EXPECT_EQ(reinterpret_cast<ULONG_PTR>(static_cast<CGinaPluginInfo*>(&record)),
              plugins[2].LastRecord().argument[0]);
    EXPECT_EQ(LUM_GINA_APP, record.szAPP) << "whatever the plugins have written there";
    EXPECT_EQ(LUM_GINA_MTM, record.szMTM);
    EXPECT_TRUE(Log().empty());

    // The low byte is the answer.
    plugins[1]->SetAction(PluginCall::QueryPlugin, PluginAction::Answer, 0x100);
    EXPECT_FALSE(object().LUMQueryPlugin(
        &record, &static_cast<const CGinaPluginInfo&>(CNamed("test_plugin_b.dll")), 0, 0, 0));
    EXPECT_EQ(Lines(2, FAILED), Log());
    EXPECT_EQ(Lines(), plugins[0].Calls());
}

TEST_F(LUMObject, QueriesThatComeToNothing)
{
    CNamed record("");
    const auto query = [&](const std::string& name) {
        const CNamed target(name);
        return object().LUMQueryPlugin(&record, &target, 0, 0, 0);
    };
    ASSERT_TRUE(plugins[0]->SetFailure(PluginCall::QueryPlugin, StandinFailure::ReadNull, 0));
    ASSERT_TRUE(plugins[1]->SetFailure(PluginCall::QueryPlugin, StandinFailure::Throw, 0));
    const auto unknown = [](const char* szName) {
        return Lines{std::string("[EXCEPTION] Plugin has generated an unknown exception, Plugin: ") + szName,
                     UNHANDLED};
    };
    struct
    {
        const char* szTarget;
        Lines log;
    } const rows[] = {{"test_plugin_a.dll", unknown("test_plugin_a.dll")},
                      {"test_plugin_b.dll", unknown("test_plugin_b.dll")},
                      {"standin_gina.dll", Lines(2, FAILED)},
                      {"nowhere.dll", Lines(2, FAILED)},
                      {"", Lines(2, FAILED)}};
    for (const auto& row : rows) {
        ClearLog();
        EXPECT_FALSE(query(row.szTarget));
        EXPECT_EQ(row.log, Log()) << row.szTarget;
    }
    EXPECT_FALSE(object().LUMQueryPlugin(&record, nullptr, 0, 0, 0));
    EXPECT_FALSE(object().LUMQueryPluginInfo(TEXT("nowhere.dll"), record));
    EXPECT_TRUE(host->LUMRemovePluginDynamic(TEXT("test_plugin_a.dll"))) << "no query is left in flight";
    EXPECT_TRUE(object().LUMGetPassthroughGina(record));
    EXPECT_EQ("standin_gina.dll", Narrow(record.m_szGinaDLL));
}

} // namespace
