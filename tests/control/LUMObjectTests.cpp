#include "../sdk/PluginsInHost.h"

namespace {

std::string BadArgument(const char* szArgument)
{
    return std::string("[EXCEPTION] A bad argument was provided, Argument: ") + szArgument;
}

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

TEST_F(LUMObject, NeedsItsObjects)
{
    CRegistryManager* pManager = host->m_pRegistryManager;
    CGinaObjectList* pList = host->m_pGinaObjectList;
    CLUMRegistry* pRegistry = host->m_pLUMRegistry;
    struct
    {
        CRegistryManager* pManager;
        CGinaObjectList* pList;
        CLUMRegistry* pRegistry;
        const char* szMissing;
    } const rows[] = {{nullptr, nullptr, nullptr, "pRegistryManager"},
                      {pManager, nullptr, nullptr, "pLUMRegistry"},
                      {pManager, nullptr, pRegistry, "pGinaObjectList"}};
    for (const auto& row : rows) {
        ClearLog();
        EXPECT_THROW(CLUMObject(LUM_GINA_APP, LUM_GINA_MTM, row.pManager, row.pList, row.pRegistry),
                     CBadArgException);
        EXPECT_EQ(Lines{BadArgument(row.szMissing)}, Log());
    }
    EXPECT_EQ(pManager, object().m_pRegistryManager);
    EXPECT_EQ(pList, object().m_pGinaObjectList);
    EXPECT_EQ(pRegistry, object().m_pLUMRegistry);
}

TEST_F(LUMObject, IsHandedToEveryPlugin)
{
    Load();
    ASSERT_TRUE(Initialize());
    for (const CPluginDriver& plugin : plugins) {
        EXPECT_EQ(reinterpret_cast<ULONG_PTR>(&object()), plugin.LastRecord().argument[0]);
    }
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

TEST_F(LUMObject, ConfiguresWithoutLoading)
{
    struct
    {
        bool (CLUMObject::*pfnChange)(const WCHAR*);
        const WCHAR* szName;
        bool bResult;
        const char* szPlugins;
        Lines log;
    } const rows[] = {
        {&CLUMObject::LUMAddPlugin, TEXT("new.dll"), true, "\"a.dll,new.dll\"", {FAILED}},
        {&CLUMObject::LUMAddPlugin, TEXT("NEW.DLL"), true, "\"a.dll,new.dll\"", {}},
        {&CLUMObject::LUMRemovePlugin, TEXT("A.dll"), true, "\"new.dll\"", {}},
        {&CLUMObject::LUMRemovePlugin, TEXT("absent.dll"), true, "\"new.dll\"", {FAILED}},
        {&CLUMObject::LUMAddPlugin, nullptr, false, "\"new.dll\"", {BadArgument("szPlugin"), FAILED}},
        {&CLUMObject::LUMRemovePlugin, nullptr, false, "\"new.dll\"", {BadArgument("szPlugin"), FAILED}},
    };
    SetString(OWN_KEY, TEXT("Plugins"), TEXT("a.dll"));
    for (const auto& row : rows) {
        ClearLog();
        EXPECT_EQ(row.bResult, (object().*row.pfnChange)(row.szName));
        EXPECT_EQ(row.szPlugins, GetValue(OWN_KEY, TEXT("Plugins")));
        EXPECT_EQ(row.log, Log());
        EXPECT_EQ("abcS", Order());
    }
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
}

TEST_F(LUMObject, TellsThePassthroughGina)
{
    CNamed record("");
    CNamed info("");
    EXPECT_TRUE(object().LUMGetPassthroughGina(record));
    EXPECT_TRUE(object().LUMQueryPluginInfo(TEXT("standin_gina.dll"), info));
    for (const CGinaPluginInfo* pInfo : {&record, &info}) {
        EXPECT_EQ("standin_gina.dll", Narrow(pInfo->m_szGinaDLL));
        EXPECT_EQ(WLX_VERSION_1_4, pInfo->m_dwWlxVersion);
        EXPECT_EQ(LUM_INTERFACE_VERSION, pInfo->m_dwLUMVersion);
        EXPECT_EQ(nullptr, pInfo->m_szFriendlyName);
    }
    host->m_pGinaObjectList->Flush();
    ClearLog();
    EXPECT_FALSE(object().LUMGetPassthroughGina(record));
    EXPECT_EQ("standin_gina.dll", Narrow(record.m_szGinaDLL));
}

} // namespace
