#include <regex>

#include "FalseServer.h"
#include "LumctlRun.h"
#include "OnlineMachine.h"

namespace {

/// A command line, and everything that comes of it.
struct CCommandRow
{
    std::string commandLine;
    ExitStatus status;
    /// JSON without line breaks and indentation; "VERSION" for a version of the library or none.
    std::string output;
    std::string error = {};
};

constexpr char NOT_DONE[] = "the host could not do it; its trace log says why";
constexpr char NOTHING_ELSE[] = "\"unreadable\": null,\"startEndedIn\": null,\"dllDoubt\": null}";
/// The DLLs that the host loads.
constexpr char SYSTEM[] = " --system ../../../bin";
constexpr char NO_HOST[] = "no host is in service";
constexpr char TIMED_OUT[] = "the host did not answer in time; it may still do it";
constexpr char BAD_TIMEOUT[] = "--timeout needs a number of seconds, at most 3600";

std::string Normalize(const CCommandRow& row, const std::string& output)
{
    static const std::regex indentation("\n *");
    static const std::regex version("(\"version\": |, version )(null|not known|\"?0x[0-9a-f]{8}\"?)");
    const bool bJson = row.commandLine.find("--json") != std::string::npos;
    return std::regex_replace(bJson ? std::regex_replace(output, indentation, "") : output, version,
                              "$1VERSION");
}

void ExpectRun(const CCommandRow& row)
{
    const CLumctlRun run = RunLumctl(SplitWords(row.commandLine));
    EXPECT_EQ(run.status, row.status) << row.commandLine;
    EXPECT_EQ(Normalize(row, run.output), row.output) << row.commandLine;
    EXPECT_EQ(run.error, row.error) << row.commandLine;
}

class OnlineCommands : public COnlineMachine
{
};

TEST_F(OnlineCommands, ShowWhatTheHostAnswers)
{
    SetString(OWN_KEY, TEXT("Plugins"), TEXT("test_plugin_a.dll,,nobody.dll"));
    const std::string list =
        " 1  test_plugin_a.dll        loaded      at the next start: loaded\n"
        " 2  nobody.dll               NOT loaded  at the next start: NOT loaded: there is no such DLL\n"
        "This is the configured order. Moves and removals since the last start do not show.\n";
    const std::string listJson =
        "\"configured\": true,\"noPlugins\": false,\"plugins\": [{\"name\": "
        "\"test_plugin_a.dll\",\"loaded\": true,"
        "\"loadedAtNextStart\": true,\"leftOut\": false,\"trouble\": null},"
        "{\"name\": \"nobody.dll\",\"loaded\": false,\"loadedAtNextStart\": false,\"leftOut\": false,"
        "\"trouble\": \"there is no such DLL\"}],\"order\": \"configured\"," +
        std::string(NOTHING_ELSE);
    const std::string status =
        "Host         in service, version VERSION\n"
        "Chain        wpnGina.dll > lum_gina.dll > msgina.dll; to the host, lum_gina.dll is in it\n"
        "Passthrough  msgina.dll, loaded; what is loaded speaks interface version 0x00010004\n"
        "Monitor      every 3600 s; no request tells whether it runs\n"
        "Plugins\n" +
        list;
    const std::string chainJson = "\"chain\": [\"wpnGina.dll\",\"lum_gina.dll\",\"msgina.dll\"],";
    const std::string statusJson = "{\"answers\": true,\"markedEnabled\": true,\"version\": VERSION,"
                                   "\"inChain\": true," +
                                   chainJson +
                                   "\"passthrough\": {\"name\": \"msgina.dll\","
                                   "\"loaded\": true,\"interfaceVersion\": \"0x00010004\"},"
                                   "\"monitor\": null,\"monitorSeconds\": 3600," +
                                   listJson;
    const std::string info = "plugins info " + std::string(260, 'x');
    const char* szRecord = "GINA interface    0x00010004\nplugin interface  0x01000000\n";
    const char* szRecordJson = "{\"ginaInterface\": \"0x00010004\",\"pluginInterface\": \"0x01000000\"}";
    StartServer();
    for (const CCommandRow& row : std::initializer_list<CCommandRow>{
             {"ping", STATUS_DONE, "A host is in service.\n", ""},
             {"ping --json", STATUS_DONE, "{\"inService\": true}", ""},
             {"gina enable --json", STATUS_DONE, "{\"done\": true}", ""},
             {"monitor off --json", STATUS_DONE, "{\"done\": true}", ""},
             {std::string("status") + SYSTEM, STATUS_DONE, status, ""},
             {std::string("status --json") + SYSTEM, STATUS_DONE, statusJson, ""},
             {std::string("plugins list") + SYSTEM, STATUS_DONE, list, ""},
             {std::string("plugins list --json") + SYSTEM, STATUS_DONE, "{" + listJson, ""},
             {std::string("plugins list --check") + SYSTEM, STATUS_BAD, list, ""},
             {"plugins info MSGINA.dll", STATUS_DONE, szRecord, ""},
             {"plugins info msgina.dll --json", STATUS_DONE, szRecordJson, ""},
             {"plugins info nobody.dll", STATUS_BAD, "", "nobody.dll is not loaded, or does not tell"},
             {info, STATUS_USAGE, "", "the name is longer than 259 characters"},
             {"gina passthrough", STATUS_DONE, szRecord, ""},
             {"gina passthrough --json", STATUS_DONE, szRecordJson, ""},
             {"gina in-chain WPNGINA.dll", STATUS_DONE, "yes\n", ""},
             {"gina in-chain kvs_gina.dll --json", STATUS_BAD, "{\"answer\": false}", ""},
             {"plugins query nobody.dll", STATUS_BAD, "no\n", ""},
             {"plugins query test_plugin_b.dll --json", STATUS_DONE, "{\"answer\": true}", ""},
             {"plugins query test_plugin_b.dll 4294967296", STATUS_USAGE, "",
              "plugins query needs numbers of 32 bits, not 4294967296"},
             {"plugins query test_plugin_b.dll 1 x", STATUS_USAGE, "",
              "plugins query needs numbers of 32 bits, not x"},
             {"plugins query test_plugin_b.dll 0x", STATUS_USAGE, "",
              "plugins query needs numbers of 32 bits, not 0x"},
         })
    {
        ExpectRun(row);
    }
}

TEST_F(OnlineCommands, HandAPluginItsNumbers)
{
    StartServer();
    ExpectRun({"plugins query test_plugin_b.dll 7 0x10 4294967295", STATUS_DONE, "yes\n", ""});
    const PluginRecord& record = plugins[1].LastRecord();
    EXPECT_EQ(record.call, PluginCall::QueryPlugin);
    EXPECT_EQ(std::vector<ULONG_PTR>(record.argument + 1, record.argument + 4),
              (std::vector<ULONG_PTR>{7, 16, 0xffffffff}));
}

TEST_F(OnlineCommands, ChangeTheHost)
{
    const std::string followed = "Done: Winlogon follows it at the next start.\n";
    const struct
    {
        CCommandRow row;
        const char* szState;
    } rows[] = {
        {{"plugins up test_plugin_b.dll", STATUS_DONE,
          "Done: until the next start test_plugin_b.dll is called earlier.\n"},
         "wpnGina | b,a,c,msgina | a,b,c"},
        {{"plugins up test_plugin_b.dll", STATUS_FAILED, "",
          NOT_DONE + std::string(" (test_plugin_b.dll is the first already, or calls inside the plugins did "
                                 "not end)")},
         "wpnGina | b,a,c,msgina | a,b,c"},
        {{"plugins down test_plugin_a.dll --json", STATUS_DONE,
          "{\"done\": true,\"takesEffect\": \"untilNextStart\"}"},
         "wpnGina | b,c,a,msgina | a,b,c"},
        {{"plugins down nobody.dll", STATUS_FAILED, "",
          NOT_DONE + std::string(" (nobody.dll is not loaded)")},
         "wpnGina | b,c,a,msgina | a,b,c"},
        {{"plugins remove test_plugin_a.dll", STATUS_DONE,
          "Done: at the next start test_plugin_a.dll is not loaded any more.\n"},
         "wpnGina | b,c,a,msgina | b,c"},
        {{"plugins remove test_plugin_a.dll", STATUS_REFUSED, "",
          "test_plugin_a.dll is not configured (see lumctl plugins list); nothing has changed"},
         "wpnGina | b,c,a,msgina | b,c"},
        {{"plugins remove TEST_PLUGIN_B.dll --now", STATUS_DONE,
          "Done: TEST_PLUGIN_B.dll is not loaded any more.\n"},
         "wpnGina | c,a,msgina | c"},
        {{"plugins remove msgina.dll --now", STATUS_REFUSED, "",
          "msgina.dll is the GINA that the host passes through to, and no plugin; nothing has changed"},
         "wpnGina | c,a,msgina | c"},
        {{"plugins remove test_plugin_a.dll --now", STATUS_DONE,
          "Done: test_plugin_a.dll is not loaded any more.\n"},
         "wpnGina | c,msgina | c"},
        {{std::string("plugins add test_plugin_a.dll") + SYSTEM, STATUS_DONE,
          "Done: at the next start test_plugin_a.dll is loaded.\n"},
         "wpnGina | c,msgina | c,a"},
        {{"plugins add test_plugin_a.dll", STATUS_DONE,
          "test_plugin_a.dll is configured already; nothing to do.\n"},
         "wpnGina | c,msgina | c,a"},
        {{"plugins add test_plugin_a.dll --now", STATUS_DONE, "Done: test_plugin_a.dll is loaded.\n"},
         "wpnGina | c,a,msgina | c,a"},
        {{"plugins add test_plugin_a.dll --now", STATUS_DONE,
          "test_plugin_a.dll is configured already; nothing to do.\n"},
         "wpnGina | c,a,msgina | c,a"},
        {{"plugins add test_plugin_b.dll --now", STATUS_DONE, "Done: test_plugin_b.dll is loaded.\n"},
         "wpnGina | c,a,b,msgina | c,a,b"},
        {{"plugins add nobody.dll --now", STATUS_FAILED, "",
          NOT_DONE + std::string(" (nobody.dll: there is no such DLL)")},
         "wpnGina | c,a,b,msgina | c,a,b"},
        {{"plugins add nobody.dll", STATUS_REFUSED, "",
          "the host could not load nobody.dll: there is no such DLL. Nothing has changed (--force adds it "
          "all "
          "the same)"},
         "wpnGina | c,a,b,msgina | c,a,b"},
        {{std::string("plugins up test_plugin_a.dll --in-service") + SYSTEM, STATUS_DONE,
          "HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\LUM\\Gina\n  Plugins: "
          "\"test_plugin_c.dll,test_plugin_a.dll,test_plugin_b.dll\" -> "
          "\"test_plugin_a.dll,test_plugin_c.dll,test_plugin_b.dll\"\n"
          "Written and read back: at the next start test_plugin_a.dll is loaded earlier.\n"},
         "wpnGina | c,a,b,msgina | a,c,b"},
        {{std::string("gina remove wpnGina.dll") + SYSTEM, STATUS_DONE, followed},
         "lum_gina | c,a,b,msgina | a,c,b"},
        {{"gina remove wpnGina.dll", STATUS_REFUSED, "",
          "gina remove wpnGina.dll: there is no such GINA in the chain (see lumctl chain show)"},
         "lum_gina | c,a,b,msgina | a,c,b"},
        {{std::string("gina disable") + SYSTEM, STATUS_DONE, followed}, "(none) | c,a,b,msgina | a,c,b"},
        {{"gina disable", STATUS_DONE, "lum_gina.dll is not in the chain; nothing to do.\n"},
         "(none) | c,a,b,msgina | a,c,b"},
        {{std::string("gina enable") + SYSTEM, STATUS_DONE, followed}, "lum_gina | c,a,b,msgina | a,c,b"},
        {{"monitor on", STATUS_DONE, "Done.\n"}, "lum_gina | c,a,b,msgina | a,c,b | monitored"},
        {{"monitor off", STATUS_DONE, "Done.\n"}, "lum_gina | c,a,b,msgina | a,c,b"},
    };
    StartServer();
    for (const auto& row : rows) {
        ExpectRun(row.row);
        EXPECT_EQ(Describe(), row.szState) << row.row.commandLine;
    }
    // The machine comes up with the host, which makes do with msgina.dll, and would not without it.
    SetString(OWN_KEY, TEXT("GinaDLL"), TEXT("wpnGina.dll"));
    SetString(TEXT("SOFTWARE\\Tamsin\\Airlink\\wpnGina"), TEXT("OldGinaDLL"), TEXT("msgina.dll"));
    ExpectRun(
        {std::string("gina disable") + SYSTEM, STATUS_REFUSED,
         "after this change: danger: Winlogon loads wpnGina.dll, and there is no such DLL\n"
         "  remedy: put wpnGina.dll into the system directory\n",
         "gina disable: the machine would not come up: Winlogon loads wpnGina.dll, and there is no such "
         "DLL. Nothing was written (--force writes all the same)"});
    EXPECT_EQ(Describe(), "lum_gina | c,a,b,msgina | a,c,b");
    // The host cannot read or write a list that is longer.
    const char* const TOO_LONG =
        "the list of plugins is, or would be, longer than 259 characters, which the host "
        "cannot read; nothing has changed";
    ExpectRun({"plugins add " + std::string(206, 'x'), STATUS_FAILED, "", TOO_LONG});
    // The length of the data counts, also behind the end of the text.
    for (const WCHAR ch : {WCHAR(','), WCHAR(0)}) {
        const auto list = Widen("test_plugin_a.dll") + std::basic_string<WCHAR>(260, ch);
        SetBytes(OWN_KEY, TEXT("Plugins"), REG_SZ, list.c_str(),
                 static_cast<DWORD>(list.size() * sizeof(WCHAR)));
        ExpectRun({"plugins remove test_plugin_a.dll", STATUS_FAILED, "", TOO_LONG});
        ExpectRun({"plugins add x.dll", STATUS_FAILED, "", TOO_LONG});
    }
}

TEST_F(OnlineCommands, SayThatTheHostDoesNotAnswer)
{
    for (const CCommandRow& row : std::initializer_list<CCommandRow>{
             {"ping --timeout 0", STATUS_UNCERTAIN, "", TIMED_OUT},
             {"status --timeout 0", STATUS_UNCERTAIN, "", TIMED_OUT},
             {"plugins list --json --timeout 0", STATUS_UNCERTAIN, "", TIMED_OUT},
             {"plugins add x.dll --now --timeout 0", STATUS_UNCERTAIN, "", TIMED_OUT},
             {"ping --timeout 3601", STATUS_USAGE, "", BAD_TIMEOUT},
             {"ping --timeout 1s", STATUS_USAGE, "", BAD_TIMEOUT},
             {"ping --timeout -1", STATUS_USAGE, "", BAD_TIMEOUT},
         })
    {
        ExpectRun(row);
    }
}

/// Another Winlogon session has ended.
TEST_F(OnlineCommands, KeepFromTheRegistryWhoeverHasClearedTheMark)
{
    StartServer();
    SetDword(VOLATILE_KEY, TEXT("Enabled"), 0);
    EXPECT_EQ(STATUS_REFUSED, RunLumctl(SplitWords(std::string("chain disable") + SYSTEM)).status);
    const std::string shown = RunLumctl(SplitWords(std::string("chain show --json") + SYSTEM)).output;
    EXPECT_NE(std::string::npos, shown.find("\"inService\": true")) << shown;
}

TEST_F(OnlineCommands, SayThatThereIsNoHost)
{
    SetString(OWN_KEY, TEXT("Plugins"), TEXT("test_plugin_a.dll,test_plugin_b.dll"));
    const std::string list = " 1  test_plugin_a.dll        configured  at the next start: loaded\n"
                             " 2  test_plugin_b.dll        configured  at the next start: loaded\n"
                             "No host is in service; this is the configuration.\n";
    const std::string rest2 = "\",\"loaded\": null,\"loadedAtNextStart\": true,\"leftOut\": false,"
                              "\"trouble\": null}";
    const std::string listJson =
        "\"configured\": true,\"noPlugins\": false,\"plugins\": [{\"name\": \"test_plugin_a.dll" + rest2 +
        ",{\"name\": \"test_plugin_b.dll" + rest2 + "],\"order\": \"configured\"," + NOTHING_ELSE;
    const std::string rest = "Chain        wpnGina.dll > lum_gina.dll > msgina.dll\nPassthrough  msgina.dll\n"
                             "Monitor      every 3600 s; no request tells whether it runs\nPlugins\n" +
                             list;
    host.reset();
    ExpectRun({std::string("status") + SYSTEM, STATUS_BAD,
               "Host         marked as in service, and does not answer\n" + rest, ""});
    SetDword(VOLATILE_KEY, TEXT("Enabled"), 0);
    for (const CCommandRow& row : std::initializer_list<CCommandRow>{
             {"ping", STATUS_BAD, "No host is in service.\n", ""},
             {std::string("status") + SYSTEM, STATUS_BAD, "Host         not in service\n" + rest, ""},
             {std::string("status --json") + SYSTEM, STATUS_BAD,
              "{\"answers\": false,\"markedEnabled\": false,"
              "\"chain\": [\"wpnGina.dll\",\"lum_gina.dll\",\"msgina.dll\"],\"passthrough\": {\"name\": "
              "\"msgina.dll\"},"
              "\"monitor\": null,\"monitorSeconds\": 3600," +
                  listJson,
              ""},
             {std::string("plugins list") + SYSTEM, STATUS_DONE, list, ""},
             {std::string("plugins list --json") + SYSTEM, STATUS_DONE, "{" + listJson, ""},
             {"version", STATUS_FAILED, "", NO_HOST},
             {std::string("plugins list --check") + SYSTEM, STATUS_BAD, list, ""},
             {"plugins add x.dll --now", STATUS_FAILED, "", NO_HOST},
             {"plugins add test_plugin_b.dll", STATUS_DONE,
              "test_plugin_b.dll is configured already; nothing to do.\n", ""},
             {"plugins down test_plugin_b.dll", STATUS_DONE,
              "test_plugin_b.dll is the last already; nothing to do.\n", ""},
             {"plugins remove test_plugin_a.dll --json", STATUS_DONE,
              "{\"done\": true,\"takesEffect\": \"nextStart\"}", ""},
             {"plugins info x.dll --json", STATUS_FAILED, "", NO_HOST},
             {"plugins query x.dll", STATUS_FAILED, "", NO_HOST},
             {"gina enable", STATUS_FAILED, "", NO_HOST},
             {"monitor on", STATUS_FAILED, "", NO_HOST},
         })
    {
        ExpectRun(row);
    }
    EXPECT_EQ(GetValue(OWN_KEY, TEXT("Plugins")), "\"test_plugin_b.dll\"");
}

class CommandsAtAFalseServer : public CFalseServer
{
};

TEST_F(CommandsAtAFalseServer, TellWhatItsAnswerMeans)
{
    const struct
    {
        std::string answer;
        CCommandRow row;
    } rows[] = {
        {std::string("\x03\x00\x01\x00", 4), {"version", STATUS_DONE, "0x00010003\n", ""}},
        {std::string("\x03\x00\x01\x00", 4), {"version --json", STATUS_DONE, "{\"version\": VERSION}", ""}},
        {std::string(4, '\0'),
         {"version", STATUS_UNCERTAIN, "", "the host cannot tell its version; its trace log says why"}},
        {"\1", {"gina passthrough", STATUS_BAD, "", "the host passes through to nothing"}},
        {"\7", {"ping", STATUS_UNCERTAIN, "", "what answered is not the host, or another version of it"}},
        {"", {"monitor off", STATUS_UNCERTAIN, "", "the host ended the connection without an answer"}},
    };
    for (const auto& row : rows) {
        AnswerWith(row.answer);
        ExpectRun(row.row);
        Join();
    }
}

#ifdef _WIN32
TEST(CommandsAtASquatter, SendNothing)
{
    const DWORD users[] = {0x00000201, 0x05000000, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_USERS};
    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorOwner(&descriptor, const_cast<DWORD*>(users), FALSE);
    SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE);
    SECURITY_ATTRIBUTES attributes = {sizeof(attributes), &descriptor, FALSE};
    const HANDLE hPipe = CreateNamedPipeW(ControlProtocol::PIPE_NAME, PIPE_ACCESS_DUPLEX, PIPE_NOWAIT, 1,
                                          4096, 4096, 10, &attributes);
    ConnectNamedPipe(hPipe, nullptr);
    ExpectRun(
        {"plugins add x.dll --timeout 1", STATUS_FAILED, "",
         "the pipe belongs to neither the system nor an administrator: it is not the host's; nothing was "
         "sent"});
    char chSent = 0;
    DWORD cbSent = 0;
    ReadFile(hPipe, &chSent, 1, &cbSent, nullptr);
    EXPECT_EQ(0u, cbSent);
    CloseHandle(hPipe);
}
#endif

} // namespace
