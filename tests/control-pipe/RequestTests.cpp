#include <algorithm>
#include <functional>

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
    for (const CRequestExample& example : GetRequestExamples()) {
        ClearLog();
        EXPECT_EQ(HideVersion(Exchange(example.bytes, example.reply.size()), example.reply), example.reply)
            << example.szName;
        EXPECT_EQ(Count(std::string("[NOTIFICATION] Received request: ") + example.szName), 1);
        if (*example.szOperation != 0) {
            EXPECT_EQ(Count(std::string("[ENTRY] ") + example.szOperation), 1) << example.szOperation;
        }
    }
    EXPECT_EQ(GetValue(OWN_KEY, TEXT("Plugins")),
              "\"test_plugin_a.dll,test_plugin_b.dll,test_plugin_c.dll,nobody.dll\"");
    host->m_pGinaObjectList->Flush();
    EXPECT_EQ(Exchange("\x66"), "01") << "there is no passthrough GINA";
}

TEST_F(Requests, ThatAreUnknownFail)
{
    for (int nCode = 0; nCode < 256; ++nCode) {
        const bool bKnown = (nCode >= 100 && nCode <= 105) || (nCode >= 112 && nCode <= 119);
        if (!bKnown && (nCode < 2 || nCode > 98)) {
            EXPECT_EQ(Exchange(std::string(1, static_cast<char>(nCode))), "01") << nCode;
        }
    }
}

TEST_F(Requests, ReachTheHostThroughTheClientLibrary)
{
    using ControlProtocol::CWireRecord;
    CControlClient client({60000, nullptr});
    CWireRecord record = {};
    CControlQuery query;
    query.target = TEXT("TEST_PLUGIN_A.DLL");
    query.record.dwSpare2 = 7;
    query.name = TEXT("about.dll");
    query.dwParam1 = 11;
    query.dwParam2 = 12;
    query.dwParam3 = 13;
    const CControlClient::Text a = TEXT("test_plugin_a.dll");
    const CControlClient::Text b = TEXT("test_plugin_b.dll");
    const CControlClient::Text c = TEXT("test_plugin_c.dll");
    const CControlClient::Text standin = TEXT("standin_gina.dll");
    const struct
    {
        const char* szWhat;
        std::function<ControlStatus()> ask;
        ControlStatus expected;
        Lines chain;
    } rows[] = {
        {"nothing", [&] { return client.Verify(); }, ControlStatus::Success, {"a", "b", "c"}},
        {"up", [&] { return client.IncreasePriority(b); }, ControlStatus::Success, {"b", "a", "c"}},
        {"up from the top",
         [&] { return client.IncreasePriority(b); },
         ControlStatus::Refused,
         {"b", "a", "c"}},
        {"down", [&] { return client.DecreasePriority(b); }, ControlStatus::Success, {"a", "b", "c"}},
        {"down from the end",
         [&] { return client.DecreasePriority(c); },
         ControlStatus::Refused,
         {"a", "b", "c"}},
        {"no name", [&] { return client.DecreasePriority({}); }, ControlStatus::Refused, {"a", "b", "c"}},
        {"unload", [&] { return client.RemovePlugin(b, true); }, ControlStatus::Success, {"a", "c"}},
        {"forget", [&] { return client.RemovePlugin(c, false); }, ControlStatus::Success, {"a", "c"}},
        {"load", [&] { return client.AddPlugin(b, true); }, ControlStatus::Success, {"a", "c", "b"}},
        {"remember", [&] { return client.AddPlugin(c, false); }, ControlStatus::Success, {"a", "c", "b"}},
        {"ask", [&] { return client.QueryPlugin(query); }, ControlStatus::Success, {"a", "c", "b"}},
        {"loaded",
         [&] { return client.IsGinaInPluginList(standin); },
         ControlStatus::Success,
         {"a", "c", "b"}},
        {"not", [&] { return client.IsGinaInPluginList(a + a); }, ControlStatus::Refused, {"a", "c", "b"}},
        {"info", [&] { return client.QueryPluginInfo(a, record); }, ControlStatus::Success, {"a", "c", "b"}},
        {"no info",
         [&] { return client.QueryPluginInfo(a + a, record); },
         ControlStatus::Refused,
         {"a", "c", "b"}},
        {"gina", [&] { return client.GetPassthroughGina(record); }, ControlStatus::Success, {"a", "c", "b"}},
        {"chain", [&] { return client.IsGinaInChainingList(a); }, ControlStatus::Refused, {"a", "c", "b"}},
        {"monitor off",
         [&] { return client.EnableActiveRegistryMonitoring(false); },
         ControlStatus::Success,
         {"a", "c", "b"}},
        {"long name",
         [&] { return client.IsGinaInPluginList(CControlClient::Text(260, 'x')); },
         ControlStatus::BadName,
         {"a", "c", "b"}},
        {"a zero in it",
         [&] { return client.RemoveGina(CControlClient::Text(1, WCHAR(0))); },
         ControlStatus::BadName,
         {"a", "c", "b"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.ask(), row.expected) << row.szWhat;
        Lines chain;
        for (const std::string& name : row.chain) {
            chain.push_back("test_plugin_" + name + ".dll");
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
    EXPECT_EQ(Exchange("\x70" + Fixed("test_plugin_a.dll"), 66).substr(0, 2), "00");
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
        {"a fixed one without end", "\x70" + std::string(520, 'x'), "", "szGinaDLL"},
        {"none", "\x68" + Counted(""), "01", nullptr},
        {"up to its first zero", "\x68" + Counted(std::string("test_plugin_a.dll\0junk", 22)), "00", nullptr},
    };
    for (const auto& row : rows) {
        ClearLog();
        EXPECT_EQ(Exchange(row.bytes, std::string(row.szReply).size()), row.szReply) << row.szWhat;
        if (row.szVariable != nullptr) {
            ExpectLine(refused + row.szVariable);
        }
        ExpectService(row.szWhat);
    }
}

} // namespace
