#include <algorithm>
#include <regex>

#include "ChainView.h"
#include "LumctlMachine.h"

namespace {

class ChainCommands : public CLumctlMachine
{
protected:
    using Strings = std::vector<std::string>;

    /// The lines "NAME: BEFORE -> AFTER" of an output, without the names.
    static Strings ChangesIn(const std::string& output)
    {
        static const std::regex pattern("  \\S+: (.*) -> (.*)");
        Strings changes;
        for (std::sregex_iterator match(output.begin(), output.end(), pattern), end; match != end; ++match) {
            changes.push_back((*match)[1].str() + " -> " + (*match)[2].str());
        }
        std::sort(changes.begin(), changes.end());
        return changes;
    }

    static Strings Differences(const Values& before, const Values& after)
    {
        Values all = before;
        all.insert(after.begin(), after.end());
        Strings changes;
        for (const auto& [name, text] : all) {
            const std::string from = Quoted(before, name);
            const std::string to = Quoted(after, name);
            if (from != to) {
                changes.push_back(from + " -> " + to);
            }
        }
        std::sort(changes.begin(), changes.end());
        return changes;
    }

    /// The severities and the texts that a check finds.
    static Strings Findings(const std::string& output)
    {
        static const std::regex pattern("(danger|doubt|warning): [^\n]*");
        Strings findings;
        for (std::sregex_iterator match(output.begin(), output.end(), pattern), end; match != end; ++match) {
            findings.push_back(match->str());
        }
        return findings;
    }

private:
    static std::string Quoted(const Values& values, const std::string& name)
    {
        const auto found = values.find(name);
        return found != values.end() ? '"' + found->second + '"' : "(none)";
    }
};

TEST_F(ChainCommands, FollowTheChainThatTheLibraryFollows)
{
    SetRecord("rec.dll", "msgina.dll,0,0,0,0");
    const struct
    {
        Values values;
        const char* szEnd;
    } rows[] = {
        {ValuesOf("msgina.dll"), "complete"},
        {ValuesOf("MSGINA.DLL"), "complete"},
        {ValuesOf("lum_gina.dll wpnGina.dll rec.dll qslogon.dll"), "complete"},
        {ValuesOf("wpnGina.dll x.dll"), "unknown"},
        {ValuesOf("lum_gina.dll wpnGina.dll"), "noPassthrough"},
        {ValuesOf("lum_gina.dll wpnGina.dll PLinkGina.dll wpngina.dll"), "cycle"},
        {ValuesOf("lum_gina.dll lum_gina.dll"), "cycle"},
        {{{"Winlogon", "wpnGina.dll"}, {"wpnGina.dll", ""}}, "noPassthrough"},
    };
    for (const auto& row : rows) {
        SetValues(row.values);
        StartHost();
        const auto manager = Build(true);
        COfflineChain chain;
        const CChainView view = FollowChain(chain, chain.ReadValues(), TEXT(""));
        std::string names;
        for (const CLinkView& link : view.links) {
            names += (names.empty() ? "" : " ") + Narrow(link.gina.c_str());
        }
        EXPECT_EQ(ChainOf(*manager), view.end == ChainEnd::Complete ? names : names + "...");
        EXPECT_STREQ(row.szEnd, NameOf(view.end)) << names;
    }
}

TEST_F(ChainCommands, ADryRunWritesNothingAndPrintsWhatIsWrittenThen)
{
    const struct
    {
        const char* szChain;
        const char* szCommand;
        const char* szResult;
    } rows[] = {
        {"", "chain enable", "lum_gina.dll msgina.dll"},
        {"msgina.dll", "chain enable", "lum_gina.dll msgina.dll"},
        {"wpnGina.dll PLinkGina.dll msgina.dll", "chain enable",
         "lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll"},
        {"wpnGina.dll lum_gina.dll msgina.dll", "chain enable", "wpnGina.dll lum_gina.dll msgina.dll"},
        {"lum_gina.dll msgina.dll", "chain disable", ""},
        {"lum_gina.dll wpnGina.dll msgina.dll", "chain disable", "wpnGina.dll msgina.dll"},
        {"wpnGina.dll msgina.dll", "chain disable", "wpnGina.dll msgina.dll"},
        {"lum_gina.dll wpnGina.dll msgina.dll", "chain remove WPNGINA.dll", "lum_gina.dll msgina.dll"},
        {"lum_gina.dll wpnGina.dll qslogon.dll", "chain remove qslogon.dll",
         "lum_gina.dll wpnGina.dll msgina.dll"},
    };
    for (const auto& row : rows) {
        DeleteGinaKeys();
        SetValues(ValuesOf(row.szChain));
        const Values before = GetValues();
        const CRun dry = Run(std::string(row.szCommand) + " --dry-run");
        EXPECT_EQ(before, GetValues());
        const CRun real = Run(row.szCommand);
        EXPECT_EQ(STATUS_DONE, dry.status) << dry.error;
        EXPECT_EQ(STATUS_DONE, real.status) << real.error;
        EXPECT_EQ(Differences(before, GetValues()), ChangesIn(dry.output)) << row.szChain;
        EXPECT_EQ(ChangesIn(dry.output), ChangesIn(real.output));
        StartHost();
        EXPECT_EQ(row.szResult, ChainOf(*Build(true)));
    }
}

TEST_F(ChainCommands, CheckSaysWhetherTheMachineComesUp)
{
    SetRecord("rec.dll", "msgina.dll,0,0,0,1");
    const struct
    {
        const char* szDlls; ///< null for all of them
        Values values;
        ExitStatus status;
        Strings findings;
    } rows[] = {
        {nullptr, {}, STATUS_DONE, {}},
        {nullptr, ValuesOf("lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll"), STATUS_DONE, {}},
        {"lum_gina.dll", {}, STATUS_BAD, {"danger: Winlogon loads msgina.dll, and there is no such DLL"}},
        {"msgina.dll=",
         {},
         STATUS_BAD,
         {"danger: Winlogon loads msgina.dll, and ginas/msgina.dll is no DLL of this system"}},
        {"msgina.dll wpnGina.dll=standin_gina_no_negotiate.dll",
         ValuesOf("wpnGina.dll msgina.dll"),
         STATUS_BAD,
         {"danger: Winlogon loads wpnGina.dll, and ginas/wpnGina.dll is no GINA: it lacks WlxNegotiate"}},
        // Of an older GINA nobody asks for more than it must have; of the host for all.
        {"msgina.dll=standin_gina_no_optional.dll", {}, STATUS_DONE, {}},
        {"msgina.dll lum_gina.dll=standin_gina_no_optional.dll",
         ValuesOf("lum_gina.dll msgina.dll"),
         STATUS_BAD,
         {"danger: Winlogon loads lum_gina.dll, and ginas/lum_gina.dll is no GINA: it lacks "
          "WlxStartApplication, WlxScreenSaverNotify, WlxReconnectNotify, WlxDisconnectNotify"}},
        {"msgina.dll lum_gina.dll=lum_gina.dll",
         ValuesOf("lum_gina.dll wpnGina.dll msgina.dll"),
         STATUS_DONE,
         {"warning: lum_gina.dll loads wpnGina.dll, and there is no such DLL; it makes do with msgina.dll"}},
        {"lum_gina.dll=lum_gina.dll",
         ValuesOf("lum_gina.dll qslogon.dll"),
         STATUS_BAD,
         {"danger: lum_gina.dll loads qslogon.dll, and there is no such DLL"}},
        {nullptr,
         ValuesOf("lum_gina.dll"),
         STATUS_DONE,
         {"warning: lum_gina.dll passes through to nothing; it makes do with msgina.dll"}},
        {nullptr, ValuesOf("wpnGina.dll"), STATUS_BAD, {"danger: wpnGina.dll passes through to nothing"}},
        {nullptr,
         ValuesOf("lum_gina.dll lum_gina.dll"),
         STATUS_BAD,
         {"danger: lum_gina.dll passes through to lum_gina.dll, which comes before it"}},
        {"rec.dll x.dll msgina.dll lum_gina.dll=lum_gina.dll",
         ValuesOf("x.dll"),
         STATUS_UNCERTAIN,
         {"doubt: x.dll is unknown, so where the chain goes on cannot be seen nor anything in it changed"}},
        {nullptr,
         {{"Winlogon", ""}},
         STATUS_UNCERTAIN,
         {"doubt: HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon, GinaDLL is "
          "there and names no GINA"}},
        {nullptr,
         ValuesOf("lum_gina.dll BVGina01.DLL rec.dll msgina.dll"),
         STATUS_DONE,
         {"warning: BVGina01.DLL wants to be the first GINA and is behind lum_gina.dll",
          "warning: rec.dll is recorded as incompatible with lum_gina.dll"}},
    };
    for (const auto& row : rows) {
        SetDlls(row.szDlls != nullptr ? row.szDlls : ALL_DLLS);
        SetValues(row.values);
        CRun run = Run("chain check");
        std::replace(run.output.begin(), run.output.end(), '\\', '/');
        Strings findings = row.findings;
        for (std::string& finding : findings) {
            std::replace(finding.begin(), finding.end(), '\\', '/');
        }
        EXPECT_EQ(row.status, run.status) << run.output;
        EXPECT_EQ(findings, Findings(run.output));
    }
}

TEST_F(ChainCommands, RefuseWhatWouldKeepTheMachineFromComingUp)
{
    const struct
    {
        const char* szDlls;
        const char* szChain;
        const char* szCommand;
        const char* szError; ///< a part of it
        bool bForceable;
    } rows[] = {
        {"msgina.dll", "msgina.dll", "chain enable", "lum_gina.dll, and there is no such DLL", true},
        {"msgina.dll lum_gina.dll=lum_gina.dll", "lum_gina.dll PLinkGina.dll msgina.dll", "chain disable",
         "Winlogon loads PLinkGina.dll", true},
        {ALL_DLLS, "x.dll", "chain enable", "cannot be followed to its end", false},
        {"x.dll msgina.dll", "x.dll", "chain remove x.dll", "cannot be followed to its end", true},
        {ALL_DLLS, "lum_gina.dll msgina.dll", "chain remove wpnGina.dll", "no such GINA in the chain", false},
        {ALL_DLLS, "lum_gina.dll wpnGina.dll msgina.dll", "chain remove msgina.dll", "would stay", false},
    };
    for (const auto& row : rows) {
        SetDlls(row.szDlls);
        SetValues(ValuesOf(row.szChain));
        const Values before = GetValues();
        const CRun run = Run(row.szCommand);
        EXPECT_EQ(STATUS_REFUSED, run.status);
        EXPECT_NE(std::string::npos, run.error.find(row.szError)) << run.error;
        EXPECT_EQ(before, GetValues());
        const ExitStatus forced = Run(row.szCommand + std::string(" --force")).status;
        EXPECT_EQ(row.bForceable, forced != STATUS_REFUSED);
        EXPECT_EQ(row.bForceable, before != GetValues());
        EXPECT_EQ(row.bForceable ? Run("chain check").status : STATUS_REFUSED, forced)
            << "it tells whether the machine comes up now";
    }
}

TEST_F(ChainCommands, AcceptEveryRemedyThatTheyOffer)
{
    SetRecord("rec.dll", "NULL,0,0,0,0");
    static const std::regex pattern("lumctl (chain [a-z]+( [A-Za-z0-9_.]+)?)");
    const struct
    {
        const char* szDlls;
        Values values;
        const char* szResult; ///< after the first remedy each time
    } rows[] = {
        {"msgina.dll", ValuesOf("x.dll"), "msgina.dll"},
        {"msgina.dll wpnGina.dll", ValuesOf("wpnGina.dll x.dll"), "wpnGina.dll msgina.dll"},
        {"msgina.dll lum_gina.dll=lum_gina.dll wpnGina.dll", ValuesOf("lum_gina.dll wpnGina.dll x.dll"),
         "lum_gina.dll wpnGina.dll msgina.dll"},
        {"msgina.dll lum_gina.dll=lum_gina.dll", ValuesOf("lum_gina.dll x.dll"), "lum_gina.dll msgina.dll"},
        {"msgina.dll", ValuesOf("rec.dll"), "msgina.dll"},
        {"msgina.dll", ValuesOf("lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll"), "msgina.dll"},
        {"msgina.dll", ValuesOf("wpnGina.dll PLinkGina.dll wpnGina.dll"), "msgina.dll"},
        {"msgina.dll", ValuesOf("lum_gina.dll lum_gina.dll"), "msgina.dll"},
        {"msgina.dll", ValuesOf("lum_gina.dll wpnGina.dll"), "msgina.dll"},
        {"msgina.dll lum_gina.dll=lum_gina.dll", {{"Winlogon", ""}}, "lum_gina.dll msgina.dll"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szResult);
        SetDlls(row.szDlls);
        DeleteGinaKeys();
        SetValues(row.values);
        std::smatch remedy;
        std::string said = Run("chain check").output;
        for (int nSteps = 0; nSteps < 5 && std::regex_search(said, remedy, pattern); ++nSteps) {
            const Values before = GetValues();
            const CRun run = Run(remedy[1]);
            EXPECT_TRUE(run.status == STATUS_DONE || run.status == STATUS_BAD) << remedy[1] << run.error;
            EXPECT_NE(before, GetValues()) << remedy[1];
            said = Run("chain check").output;
        }
        EXPECT_EQ(STATUS_DONE, Run("chain check").status) << Run("chain check").output;
        std::string chain;
        COfflineChain offline;
        for (const CLinkView& link : FollowChain(offline, offline.ReadValues(), TEXT("")).links) {
            chain += (chain.empty() ? "" : " ") + Narrow(link.gina.c_str());
        }
        EXPECT_EQ(row.szResult, chain);
    }
}

TEST_F(ChainCommands, RefuseWhileAHostIsInService)
{
    SetValues(ValuesOf("lum_gina.dll msgina.dll"));
    SetDword(VOLATILE_KEY, TEXT("Enabled"), 1);
    const CRun run = Run("chain disable");
    EXPECT_EQ(STATUS_REFUSED, run.status);
    EXPECT_NE(std::string::npos, run.error.find("is in service")) << run.error;
    EXPECT_NE(std::string::npos, run.error.find("use lumctl gina disable")) << run.error;
    EXPECT_EQ(STATUS_REFUSED, Run("chain disable --force").status) << "that is about something else";
    EXPECT_EQ(ValuesOf("lum_gina.dll msgina.dll"), GetValues());
    SetDlls("msgina.dll");
    EXPECT_NE(std::string::npos, Run("chain check").output.find("or lumctl gina disable\n"));
    EXPECT_NE(std::string::npos, Run("chain show --json").output.find("\"inService\": true"));
    EXPECT_EQ(STATUS_DONE, Run("chain disable --in-service").status);
}

TEST_F(ChainCommands, RestoreMakesTheChainWhatItWas)
{
    SetRecord("rec.dll", "msgina.dll,0,0,0,0");
    const Values rows[] = {
        {},
        ValuesOf("lum_gina.dll msgina.dll"),
        ValuesOf("wpnGina.dll PLinkGina.dll msgina.dll"),
        ValuesOf("lum_gina.dll rec.dll kvs_gina.dll qslogon.dll"),
        {{"Winlogon", "PLinkGina.dll"}, {"PLinkGina.dll", "msgina.dll"}, {"wpnGina.dll", ""}},
    };
    for (const Values& saved : rows) {
        for (const Values& current : rows) {
            SetValues(saved);
            EXPECT_EQ(STATUS_DONE, Run("chain backup --force saved.reg").status);
            SetValues(current);
            const CRun dry = Run("chain restore --dry-run saved.reg");
            const CRun real = Run("chain restore saved.reg");
            EXPECT_EQ(STATUS_DONE, real.status) << real.error;
            // A record is backed up only for a GINA in the chain, and so is its value.
            Values expected = saved;
            if (current.count("rec.dll") != 0 && saved.count("rec.dll") == 0) {
                expected["rec.dll"] = current.at("rec.dll");
            }
            EXPECT_EQ(expected, GetValues());
            EXPECT_EQ(Differences(current, expected), ChangesIn(dry.output));
            EXPECT_EQ(ChangesIn(dry.output), ChangesIn(real.output));
        }
    }
    EXPECT_EQ(STATUS_FAILED, Run("chain backup saved.reg").status) << "replaces an older one";
}

TEST_F(ChainCommands, RestoreBringsAChainingRecordBack)
{
    SetRecord("rec.dll", "msgina.dll,0,0,0,0");
    const Values saved = ValuesOf("rec.dll msgina.dll");
    SetValues(saved);
    EXPECT_EQ(STATUS_DONE, Run("chain backup --force saved.reg").status);
    const std::string record = GetValue(OWN_KEY, TEXT("rec.dll"));
    SetValues({});
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, VOLATILE_KEY);
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, OWN_KEY);
    const CRun run = Run("chain restore saved.reg");
    EXPECT_EQ(STATUS_DONE, run.status) << run.error << run.output;
    EXPECT_EQ(record, GetValue(OWN_KEY, TEXT("rec.dll")));
    EXPECT_EQ(saved, GetValues());
}

TEST_F(ChainCommands, RestoreRefusesWhatIsNoBackup)
{
    const std::string winlogon =
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon]\r\n";
    const std::string good = winlogon + "\"GinaDLL\"=\"msgina.dll\"\r\n";
    const struct
    {
        std::string text;
        const char* szError;
    } rows[] = {
        {"", "does not say which GINA Winlogon loads"},
        {winlogon, "does not say which GINA Winlogon loads"},
        {good + "\"Shell\"=\"evil.exe\"\r\n", "Winlogon, Shell is no value of a chain"},
        {winlogon + "\"GinaDLL\"=dword:00000001\r\n", "the machine would not come up"},
        {good + "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Other]\r\n", "SOFTWARE\\Other holds nothing of a chain"},
        {good + "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\LUM\\Gina]\r\n", "Gina is to be deleted"},
        {good + "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\LUM\\Gina]\r\n\"y.dll\"=\"1,2,3\"\r\n",
         "Gina, y.dll is no value of a chain"},
        {good + "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\LUM\\Gina]\r\n\"Plugins\"=\"a.dll\"\r\n",
         "Gina, Plugins is no value of a chain"},
        {good + "[HKEY_CURRENT_USER\\Software]\r\n", "line 5: only keys of HKEY_LOCAL_MACHINE"},
        {good + "nonsense\r\n", "line 5: neither a key nor a value"},
        {winlogon + "\"GinaDLL\"=\"x.dll\"\r\n", "the machine would not come up"},
    };
    SetValues(ValuesOf("wpnGina.dll msgina.dll"));
    const Values before = GetValues();
    for (const auto& row : rows) {
        WriteFile("bad.reg", "Windows Registry Editor Version 5.00\r\n\r\n" + row.text);
        const CRun run = Run("chain restore bad.reg");
        EXPECT_NE(STATUS_DONE, run.status);
        EXPECT_NE(std::string::npos, run.error.find(row.szError)) << run.error;
        EXPECT_EQ(before, GetValues());
    }
    EXPECT_EQ(STATUS_FAILED, Run("chain restore none.reg").status);
}

TEST_F(ChainCommands, AValueThatIsNoTextIsNamedAndKept)
{
    SetValues(ValuesOf("wpnGina.dll"));
    SetDword(TEXT("SOFTWARE\\Tamsin\\Airlink\\wpnGina"), TEXT("OldGinaDLL"), 1);
    const std::string findings = Run("chain check").output;
    EXPECT_NE(std::string::npos, findings.find("OldGinaDLL is (no text: 4 bytes of type 4)")) << findings;
    EXPECT_EQ(STATUS_DONE, Run("chain backup --force saved.reg").status);
    SetValues(ValuesOf("wpnGina.dll"));
    const CRun run = Run("chain restore saved.reg");
    EXPECT_EQ(STATUS_BAD, run.status) << run.error;
    EXPECT_EQ(findings, Run("chain check").output);
}

TEST_F(ChainCommands, ABackupIsWhatTheSystemsEditorImports)
{
    SetValues(ValuesOf("wpnGina.dll msgina.dll"));
    EXPECT_EQ(STATUS_DONE, Run("chain backup --force saved.reg").status);
    std::string bytes = ReadFile("saved.reg");
    EXPECT_EQ("\xFF\xFE", bytes.substr(0, 2));
    std::erase(bytes, '\0');
    EXPECT_EQ("Windows Registry Editor Version 5.00\r\n\r\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Tamsin\\Airlink\\wpnGina]\r\n"
              "\"OldGinaDLL\"=\"msgina.dll\"\r\n\r\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon]\r\n"
              "\"GinaDLL\"=\"wpnGina.dll\"\r\n\r\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\PortLink\\PLinkGina]\r\n\"OldGinaDLL\"=-\r\n\r\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Brevik Systems\\Gina]\r\n\"GinaDLL\"=-\r\n\r\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\LUM\\Gina]\r\n\"GinaDLL\"=-\r\n\r\n"
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\KVS\\Gina]\r\n\"GinaDLL\"=-\r\n",
              bytes.substr(2));
}

TEST_F(ChainCommands, JsonTellsWhatTheTextTells)
{
    SetDlls("msgina.dll");
    SetValues(ValuesOf("wpnGina.dll"));
    EXPECT_EQ("{\n"
              "  \"safe\": false,\n"
              "  \"findings\": [\n"
              "    {\n"
              "      \"severity\": \"danger\",\n"
              "      \"text\": \"Winlogon loads wpnGina.dll, and there is no such DLL\",\n"
              "      \"remedy\": \"put wpnGina.dll into the system directory, or lumctl chain remove "
              "wpnGina.dll\"\n"
              "    },\n"
              "    {\n"
              "      \"severity\": \"danger\",\n"
              "      \"text\": \"wpnGina.dll passes through to nothing\",\n"
              "      \"remedy\": \"set HKEY_LOCAL_MACHINE\\\\SOFTWARE\\\\Tamsin\\\\Airlink\\\\wpnGina, "
              "OldGinaDLL to "
              "the GINA that is to follow, such as msgina.dll\"\n"
              "    }\n"
              "  ]\n"
              "}\n",
              Run("chain check --json").output);
    SetString(WINLOGON_KEY, WINLOGON_GINA_DLL, TEXT("\u00E9\"\\.dll"));
    const std::string shown = Run("chain show --json").output;
    EXPECT_NE(std::string::npos, shown.find("\"text\": \"\\u00e9\\\"\\\\.dll\"")) << shown;
}

TEST_F(ChainCommands, SayWhatIsWrongWithACommandLine)
{
    const struct
    {
        const char* szCommandLine;
        const char* szError;
    } rows[] = {
        {"", "no command was named"},
        {"chain", "unknown command chain"},
        {"chain explode", "unknown command chain explode"},
        {"chain remove", "chain remove needs NAME"},
        {"chain show wpnGina.dll", "chain show takes no wpnGina.dll"},
        {"chain show --dry-run", "chain show has no option --dry-run"},
        {"chain show --loud", "unknown option --loud"},
        {"chain show --system nowhere", "--system: there is no directory nowhere"},
    };
    for (const auto& row : rows) {
        const CRun run = RunLumctl(SplitWords(row.szCommandLine));
        EXPECT_EQ(STATUS_USAGE, run.status) << row.szCommandLine;
        EXPECT_EQ(row.szError, run.error);
    }
}

} // namespace
