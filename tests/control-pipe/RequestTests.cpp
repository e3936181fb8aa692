#include <algorithm>
#include <functional>
#include <map>

#include "PipeMachine.h"

// What the server answers, and what carries the requests out.

namespace {

class Requests : public CPipeMachine
{
protected:
    Requests() { StartServer(); }
};

void WINAPI NoteIdentity(void* pContext, const PluginRecord*)
{
    *static_cast<bool*>(pContext) = IsImpersonating();
}

/// What a plugin is asked. Its record lives no longer than the call.
struct CSeenQuery
{
    CGinaPluginInfo info{LUM_GINA_APP, LUM_GINA_MTM};
    ULONG_PTR params[3] = {};
};

void WINAPI NoteQuery(void* pContext, const PluginRecord* pRecord)
{
    CSeenQuery& seen = *static_cast<CSeenQuery*>(pContext);
    seen.info = *reinterpret_cast<const CGinaPluginInfo*>(pRecord->argument[0]);
    std::copy(pRecord->argument + 1, pRecord->argument + 4, seen.params);
}

/// Versions differ; everything else must be as it is.
std::string HideVersion(std::string reply, const std::string& expected)
{
    for (std::size_t n = 0; n < reply.size() && n < expected.size(); ++n) {
        reply[n] = expected[n] == 'v' ? 'v' : reply[n];
    }
    return reply;
}

TEST_F(Requests, AreCarriedOutAndAnswered)
{
    SetTraceMask(LEVEL_ENTRY | LEVEL_NOTIFICATION);
    std::map<std::string, int> received;
    for (const CRequestExample& example : GetRequestExamples()) {
        EXPECT_EQ(HideVersion(Exchange(example.bytes), example.reply), example.reply) << example.szName;
        ++received[example.szName];
        if (*example.szOperation != 0) {
            EXPECT_EQ(Count(std::string("[ENTRY] ") + example.szOperation), 1) << example.szOperation;
        }
    }
    for (const auto& [name, nTimes] : received) {
        EXPECT_EQ(Count("[NOTIFICATION] Received request: " + name), nTimes) << name;
    }
    EXPECT_EQ(GetValue(OWN_KEY, TEXT("Plugins")),
              "\"test_plugin_a.dll,test_plugin_b.dll,test_plugin_c.dll,nobody.dll\"");
    host->m_pGinaObjectList->Flush();
    EXPECT_EQ(Exchange("\x66"), "01") << "there is no passthrough GINA";
}

TEST_F(Requests, ThatAreUnknownFail)
{
    for (const int nCode : {0, 1, 99, 106, 111, 120, 200, 255}) {
        EXPECT_EQ(Exchange(std::string(1, static_cast<char>(nCode))), "01") << nCode;
    }
}

TEST_F(Requests, ReachTheHostThroughTheClientLibrary)
{
    using ControlProtocol::CWireRecord;
    using Text = CControlClient::Text;
    CControlClient client({60000, nullptr});
    CWireRecord record = {};
    DWORD dwVersion = 0;
    CControlQuery query;
    query.target = TEXT("TEST_PLUGIN_A.DLL");
    query.record.dwSpare2 = 7;
    query.name = TEXT("about.dll");
    query.dwParam1 = 11;
    query.dwParam2 = 12;
    query.dwParam3 = 13;
    const Text a = TEXT("test_plugin_a.dll");
    const Text b = TEXT("test_plugin_b.dll");
    const Text c = TEXT("test_plugin_c.dll");
    const Text standin = TEXT("standin_gina.dll");
    constexpr auto DONE = ControlStatus::Success;
    constexpr auto REFUSED = ControlStatus::Refused;
    const struct
    {
        const char* szWhat;
        std::function<ControlStatus()> ask;
        ControlStatus expected;
        const char* szPlugins;
    } rows[] = {
        {"nothing", [&] { return client.Verify(); }, DONE, "abc"},
        {"up", [&] { return client.IncreasePriority(b); }, DONE, "bac"},
        {"up from the top", [&] { return client.IncreasePriority(b); }, REFUSED, "bac"},
        {"down", [&] { return client.DecreasePriority(b); }, DONE, "abc"},
        {"down from the end", [&] { return client.DecreasePriority(c); }, REFUSED, "abc"},
        {"no name", [&] { return client.DecreasePriority({}); }, REFUSED, "abc"},
        {"unload", [&] { return client.RemovePlugin(b, true); }, DONE, "ac"},
        {"forget", [&] { return client.RemovePlugin(c, false); }, DONE, "ac"},
        {"load", [&] { return client.AddPlugin(b, true); }, DONE, "acb"},
        {"remember", [&] { return client.AddPlugin(c, false); }, DONE, "acb"},
        {"ask", [&] { return client.QueryPlugin(query); }, DONE, "acb"},
        {"loaded", [&] { return client.IsGinaInPluginList(standin); }, DONE, "acb"},
        {"not", [&] { return client.IsGinaInPluginList(a + a); }, REFUSED, "acb"},
        {"no info", [&] { return client.QueryPluginInfo(a + a, record); }, REFUSED, "acb"},
        {"info", [&] { return client.QueryPluginInfo(a, record); }, DONE, "acb"},
        {"gina", [&] { return client.GetPassthroughGina(record); }, DONE, "acb"},
        {"chain", [&] { return client.IsGinaInChainingList(a); }, REFUSED, "acb"},
        {"monitor off", [&] { return client.EnableActiveRegistryMonitoring(false); }, DONE, "acb"},
        {"version", [&] { return client.GetVersion(dwVersion); }, DONE, "acb"},
        {"out of the chain", [&] { return client.RemoveGina(standin); }, REFUSED, "acb"},
        {"the host, too", [&] { return client.EnableGina(false); }, REFUSED, "acb"},
        {"long name", [&] { return client.RemoveGina(Text(260, 'x')); }, ControlStatus::BadName, "acb"},
        {"a zero in it", [&] { return client.RemoveGina(Text(1, 0)); }, ControlStatus::BadName, "acb"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.ask(), row.expected) << row.szWhat;
        Lines chain;
        for (const char* pPlugin = row.szPlugins; *pPlugin != 0; ++pPlugin) {
            chain.push_back(std::string("test_plugin_") + *pPlugin + ".dll");
        }
        chain.push_back("standin_gina.dll");
        EXPECT_EQ(Chain(), chain) << row.szWhat;
    }
    EXPECT_EQ(GetValue(OWN_KEY, TEXT("Plugins")),
              "\"test_plugin_a.dll,test_plugin_b.dll,test_plugin_c.dll\"");
    EXPECT_EQ(record.dwWlxVersion, DWORD(WLX_VERSION_1_4));
    EXPECT_EQ(record.szGinaDLL, 0u) << "an address of the host";
}

TEST_F(Requests, HandPluginsRecordsOfTheHostsOwn)
{
    CSeenQuery seen;
    plugins[0]->SetHook(PluginCall::QueryPlugin, NoteQuery, &seen);
    const std::string params = Number(0xffffffff) + Number(2) + Number(3);
    EXPECT_EQ(
        Exchange("\x69" + Record() + Record() + params + Counted("about.dll") + Counted("test_plugin_a.dll")),
        "00");
    EXPECT_EQ(Narrow(seen.info.m_szGinaDLL), "about.dll");
    EXPECT_EQ(seen.info.m_szFriendlyName, nullptr);
    EXPECT_EQ(seen.info.m_dwSpare1, 1u);
    EXPECT_EQ(seen.info.m_dwWlxVersion, 0x00010003u);
    EXPECT_EQ(seen.info.m_dwLUMVersion, 0x01000000u);
    EXPECT_EQ(seen.info.m_dwSpare2, 2u);
    EXPECT_EQ(static_cast<DWORD>(seen.params[0]), 0xffffffffu);
    EXPECT_EQ(static_cast<DWORD>(seen.params[2]), 3u);
}

TEST_F(Requests, AreCarriedOutUnderTheClientsIdentity)
{
    bool bImpersonated = false;
    plugins[0]->SetHook(PluginCall::QueryPluginInfo, NoteIdentity, &bImpersonated);
    EXPECT_EQ(Exchange("\x70" + Fixed("test_plugin_a.dll")).substr(0, 2), "00");
    EXPECT_TRUE(bImpersonated);
}

TEST_F(Requests, WithNamesOfAnyLength)
{
    const std::string refused = "[EXCEPTION] Memory could not be allocated, Variable: ";
    const std::string longest(259, 'x');
    const struct
    {
        const char* szWhat;
        std::string bytes;
        const char* szReply;
        const char* szVariable;
    } rows[] = {
        {"the longest", "\x68" + Counted(longest), "01", nullptr},
        {"one longer", "\x68" + Counted(longest + "x"), "", "szPlugin"},
        {"no end of it", "\x67" + Number(0xffffffff), "", "szGinaDLL"},
        {"half the address space", "\x73" + Number(0x7fffffff), "", "szPlugin"},
        {"a record's", "\x64" + Record() + Number(260), "", "m_szGinaDLL"},
        {"a fixed one without end", "\x70" + std::string(520, 'x'), "01", nullptr},
        {"none", "\x68" + Counted(""), "01", nullptr},
        {"up to its first zero", "\x68" + Counted(std::string("test_plugin_a.dll\0junk", 22)), "00", nullptr},
    };
    for (const auto& row : rows) {
        ClearLog();
        EXPECT_EQ(Exchange(row.bytes), row.szReply) << row.szWhat;
        if (row.szVariable != nullptr) {
            ExpectLine(refused + row.szVariable);
        }
        ExpectService(row.szWhat);
    }
}

} // namespace
