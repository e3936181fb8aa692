#include <algorithm>
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

TEST_F(Requests, HandPluginsRecordsOfTheHostsOwn)
{
    CSeenQuery seen;
    plugins[0]->SetHook(PluginCall::QueryPlugin, NoteQuery, &seen);
    const auto expectQuery = [&](const char* szName, DWORD dwSpare2) {
        EXPECT_EQ(Narrow(seen.info.m_szGinaDLL), szName);
        EXPECT_EQ(seen.info.m_szFriendlyName, nullptr);
        EXPECT_EQ((std::vector<DWORD>{1, 0x00010003, 0x01000000, dwSpare2}),
                  (std::vector<DWORD>{seen.info.m_dwSpare1, seen.info.m_dwWlxVersion,
                                      seen.info.m_dwLUMVersion, seen.info.m_dwSpare2}));
        EXPECT_EQ((std::vector<ULONG_PTR>{0xffffffff, 2, 3}),
                  std::vector<ULONG_PTR>(seen.params, seen.params + 3));
    };
    const std::string params = Number(0xffffffff) + Number(2) + Number(3);
    EXPECT_EQ(
        Exchange("\x69" + Record() + Record() + params + Counted("about.dll") + Counted("test_plugin_a.dll")),
        "00");
    expectQuery("about.dll", 2);
    // The same through the client library, which refuses what the host would.
    CControlClient client({60000, nullptr});
    CControlQuery query = {TEXT("TEST_PLUGIN_A.DLL"), {}, TEXT("another.dll"), 0xffffffff, 2, 3};
    query.record = {0, 0, 1, 0, 0, 0x00010003, 0x01000000, 7};
    EXPECT_EQ(client.QueryPlugin(query), ControlStatus::Success);
    expectQuery("another.dll", 7);
    for (const CControlClient::Text& name : {CControlClient::Text(260, 'x'), CControlClient::Text(1, 0)}) {
        EXPECT_EQ(client.RemoveGina(name), ControlStatus::BadName);
    }
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
