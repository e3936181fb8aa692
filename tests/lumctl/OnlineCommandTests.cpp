#include <iterator>
#include <sstream>

#include "../control-pipe/PipeMachine.h"
#include "LumctlRun.h"

// What lumctl says and does to a host in service, through its pipe.

namespace {

struct CRow
{
    const char* szCommand;
    ExitStatus status;
    const char* szOutput;
    const char* szError = "";
};

void ExpectRun(const CRow& row)
{
    std::istringstream stream(std::string("lumctl ") + row.szCommand);
    const CLumctlRun run = RunLumctl({std::istream_iterator<std::string>(stream), {}});
    EXPECT_EQ(run.status, row.status) << row.szCommand;
    EXPECT_EQ(run.output, row.szOutput) << row.szCommand;
    EXPECT_EQ(run.error, row.szError) << row.szCommand;
}

constexpr const char* DONE = "Done.\n";
constexpr const char* COULD_NOT = "the host could not do it; its trace log says why";
constexpr const char* LAST_LINE = "This is the configured order. Moves since the last start do not show.\n";

using OnlineCommands = CPipeMachine;

TEST_F(OnlineCommands, AskAndChangeTheHost)
{
    StartServer();
    const std::string list = std::string(" 1  test_plugin_a.dll        loaded\n"
                                         " 2  test_plugin_b.dll        loaded\n"
                                         " 3  nobody.dll               NOT loaded\n") +
                             LAST_LINE;
    const CRow rows[] = {
        {"ping", STATUS_DONE, "A host is in service.\n"},
        {"ping --json", STATUS_DONE, "{\n  \"inService\": true\n}\n"},
        // The host of this test is no DLL, so it has no version resource.
        {"version", STATUS_DONE, "0.0\n"},
        {"version --json", STATUS_DONE, "{\n  \"version\": \"0.0\"\n}\n"},
        {"plugins up test_plugin_b.dll", STATUS_DONE, DONE},
        {"plugins up test_plugin_b.dll", STATUS_FAILED, "", COULD_NOT},
        {"plugins down TEST_PLUGIN_B.DLL --json", STATUS_DONE, "{\n  \"done\": true\n}\n"},
        {"plugins down test_plugin_c.dll", STATUS_FAILED, "", COULD_NOT},
        {"plugins query test_plugin_a.dll 1 0x2 4294967295", STATUS_DONE, "yes\n"},
        {"plugins query nobody.dll --json", STATUS_BAD, "{\n  \"answer\": false\n}\n"},
        {"plugins query test_plugin_a.dll two", STATUS_USAGE, "",
         "plugins query needs numbers of 32 bits, not two"},
        {"plugins info standin_gina.dll", STATUS_DONE,
         "GINA interface    1.4\nplugin interface  0x01000000\n"},
        {"plugins info nobody.dll --json", STATUS_BAD, "", "nobody.dll is not loaded, or does not tell"},
        {"plugins remove test_plugin_b.dll --now", STATUS_DONE, DONE},
        {"plugins remove test_plugin_b.dll --now", STATUS_FAILED, "", COULD_NOT},
        {"plugins add test_plugin_b.dll --now", STATUS_DONE, DONE},
        {"plugins remove test_plugin_c.dll", STATUS_DONE, DONE},
        {"plugins add nobody.dll --now", STATUS_FAILED, "", COULD_NOT},
        {"plugins add nobody.dll", STATUS_DONE, DONE},
        {"plugins list", STATUS_DONE, list.c_str()},
        {"gina in-chain lum_gina.dll", STATUS_BAD, "no\n"},
        {"gina enable", STATUS_DONE, DONE},
        {"gina in-chain LUM_GINA.DLL --json", STATUS_DONE, "{\n  \"answer\": true\n}\n"},
        {"gina remove wpnGina.dll", STATUS_FAILED, "", COULD_NOT},
        {"gina passthrough --json", STATUS_DONE,
         "{\n  \"ginaInterface\": \"1.4\",\n  \"pluginInterface\": \"0x01000000\"\n}\n"},
        {"monitor off", STATUS_DONE, DONE},
        {"monitor on", STATUS_DONE, DONE},
        {"monitor off", STATUS_DONE, DONE},
        {"status", STATUS_DONE,
         "Host         in service, version 0.0\n"
         "Chain        lum_gina.dll > msgina.dll; to the host, lum_gina.dll is in it\n"
         "Passthrough  msgina.dll, NOT loaded; the loaded one speaks GINA interface 1.4\n"
         "Monitor      every 3600 s; no request tells whether it runs\n"
         "Plugins\n"
         " 1  test_plugin_a.dll        loaded\n"
         " 2  test_plugin_b.dll        loaded\n"
         " 3  nobody.dll               NOT loaded\n"
         "This is the configured order. Moves since the last start do not show.\n"},
        {"gina disable", STATUS_DONE, DONE},
        {"gina disable", STATUS_FAILED, "", COULD_NOT},
        {"status --json", STATUS_DONE, R"({
  "answers": true,
  "markedEnabled": true,
  "version": "0.0",
  "inChain": false,
  "chain": [
    "msgina.dll"
  ],
  "passthrough": {
    "name": "msgina.dll",
    "loaded": false,
    "ginaInterface": "1.4"
  },
  "monitor": null,
  "monitorSeconds": 3600,
  "configured": true,
  "plugins": [
    {
      "name": "test_plugin_a.dll",
      "loaded": true
    },
    {
      "name": "test_plugin_b.dll",
      "loaded": true
    },
    {
      "name": "nobody.dll",
      "loaded": false
    }
  ],
  "order": "configured"
}
)"},
    };
    for (const CRow& row : rows) {
        ExpectRun(row);
    }
    EXPECT_EQ(Chain(),
              (Lines{"test_plugin_a.dll", "test_plugin_c.dll", "test_plugin_b.dll", "standin_gina.dll"}));
}

TEST_F(OnlineCommands, DoNotWaitForEver)
{
    // The pipe is there, and nobody serves it.
    const char* const late = "the host did not answer in time; it may still do it";
    const CRow rows[] = {
        {"ping --timeout 0", STATUS_UNCERTAIN, "", late},
        {"plugins remove test_plugin_a.dll --timeout 0", STATUS_UNCERTAIN, "", late},
        {"status --json --timeout 0", STATUS_UNCERTAIN, "", late},
        {"ping --timeout soon", STATUS_USAGE, "", "--timeout needs a number of seconds, at most 3600"},
    };
    for (const CRow& row : rows) {
        ExpectRun(row);
    }
}

TEST(OnlineCommandsAlone, TellThatThereIsNoHost)
{
    const char* const none = "no host is in service on this machine";
    const std::string longName = "plugins add " + std::string(260, 'x');
    const CRow rows[] = {
        {"ping", STATUS_BAD, "No host is in service.\n"},
        {"version", STATUS_FAILED, "", none},
        {"gina disable --json", STATUS_FAILED, "", none},
        {"plugins query test_plugin_a.dll", STATUS_FAILED, "", none},
        {longName.c_str(), STATUS_USAGE, "", "the name is longer than 259 characters"},
        {"plugins list", STATUS_DONE, "The registry holds no configuration of the host.\n"},
        {"status", STATUS_BAD,
         "Host         not in service\nChain        not known\nPassthrough  none named\n"
         "Monitor      no request tells whether it runs\nPlugins\n"
         "The registry holds no configuration of the host.\n"},
    };
    for (const CRow& row : rows) {
        ExpectRun(row);
    }
}

} // namespace
