#include <algorithm>
#include <regex>

#include "LumctlMachine.h"

namespace {

class ChainCommands : public CLumctlMachine
{
protected:
    static bool Has(const std::string& text, const std::string& part)
    {
        return text.find(part) != std::string::npos;
    }

    std::string RegistryChain() { return ChainOf(*Build(true)); }

    /// Runs a change as a dry run and in earnest; only what is written in the end may differ.
    CRun Change(const std::string& command)
    {
        const Values before = GetValues();
        const CRun dry = Run(command + " --dry-run");
        EXPECT_EQ(before, GetValues());
        const CRun real = Run(command);
        EXPECT_EQ(dry.status, real.status) << command << real.error;
        EXPECT_EQ(dry.error, real.error);
        const auto cut = [](const std::string& text, const std::string& end) {
            return text.substr(0, text.find(end));
        };
        EXPECT_EQ(cut(dry.output, "Nothing was written (--dry-run).\n"),
                  cut(real.output, "Written and read back.\n"));
        Values after = GetValues();
        Values all = before;
        all.insert(after.begin(), after.end());
        for (const auto& [name, text] : all) {
            const std::string change = Quoted(before, name) + " -> " + Quoted(after, name);
            const bool bStays = Quoted(before, name) == Quoted(after, name);
            EXPECT_TRUE(bStays || Has(real.output, change)) << change << real.output;
        }
        return real;
    }

    /// The severities and the texts that a check finds, a line each.
    static std::string Findings(const std::string& output)
    {
        static const std::regex pattern("(danger|doubt|warning): [^\n]*\n");
        static const std::regex backslash("ginas\\\\");
        std::string findings;
        for (std::sregex_iterator match(output.begin(), output.end(), pattern), end; match != end; ++match) {
            findings += match->str();
        }
        return std::regex_replace(findings, backslash, "ginas/");
    }

private:
    static std::string Quoted(const Values& values, const std::string& name)
    {
        const auto found = values.find(name);
        return found != values.end() ? '"' + found->second + '"' : "(none)";
    }
};

TEST_F(ChainCommands, ChangeTheChainOrSayWhyNot)
{
    const char* const WITHOUT_HOST = "msgina.dll";
    const char* const WITHOUT_OTHERS = "msgina.dll lum_gina.dll=lum_gina.dll";
    const char* const ENABLED =
        "HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\LUM\\Gina\n"
        "  GinaDLL: (none) -> \"wpnGina.dll\"\n"
        "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon\n"
        "  GinaDLL: \"wpnGina.dll\" -> \"lum_gina.dll\"\nWritten";
    // clang-format off
    const struct
    {
        const char* szDlls;
        const char* szChain;
        const char* szCommand;
        ExitStatus status;
        const char* szResult; ///< null for the same
        const char* szSays = "";
    } rows[] = {
        {ALL_DLLS, "", "enable", STATUS_DONE, "lum_gina.dll msgina.dll"},
        {ALL_DLLS, "msgina.dll", "enable", STATUS_DONE, "lum_gina.dll msgina.dll"},
        {ALL_DLLS, "wpnGina.dll PLinkGina.dll msgina.dll", "enable", STATUS_DONE, "lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll", ENABLED},
        {ALL_DLLS, "wpnGina.dll lum_gina.dll msgina.dll", "enable", STATUS_DONE, nullptr, "nothing to do"},
        {ALL_DLLS, "lum_gina.dll msgina.dll", "disable", STATUS_DONE, ""},
        {ALL_DLLS, "lum_gina.dll wpnGina.dll msgina.dll", "disable", STATUS_DONE, "wpnGina.dll msgina.dll"},
        {ALL_DLLS, "wpnGina.dll msgina.dll", "disable", STATUS_DONE, nullptr, "nothing to do"},
        {ALL_DLLS, "", "disable", STATUS_DONE, nullptr, "nothing to do"},
        {ALL_DLLS, "lum_gina.dll wpnGina.dll msgina.dll", "remove WPNGINA.dll", STATUS_DONE, "lum_gina.dll msgina.dll"},
        {ALL_DLLS, "lum_gina.dll rec.dll msgina.dll", "remove lum_gina.dll", STATUS_DONE, "rec.dll msgina.dll"},
        {ALL_DLLS, "lum_gina.dll wpnGina.dll qslogon.dll", "remove qslogon.dll", STATUS_DONE, "lum_gina.dll wpnGina.dll msgina.dll"},
        // Nothing is made up for a GINA without a default.
        {ALL_DLLS, "lum_gina.dll kvs_gina.dll qslogon.dll", "remove qslogon.dll", STATUS_REFUSED, nullptr, "it would stay in the chain"},
        {ALL_DLLS, "lum_gina.dll wpnGina.dll msgina.dll", "remove msgina.dll", STATUS_REFUSED, nullptr, "it would stay in the chain"},
        {ALL_DLLS, "lum_gina.dll msgina.dll", "remove wpnGina.dll", STATUS_REFUSED, nullptr, "no such GINA in the chain"},
        {ALL_DLLS, "", "remove msgina.dll", STATUS_REFUSED, nullptr, "no such GINA in the chain"},
        {ALL_DLLS, "x.dll", "enable --force", STATUS_REFUSED, nullptr, "cannot be followed to its end"},
        {"x.dll msgina.dll", "x.dll", "remove x.dll", STATUS_REFUSED, nullptr, "cannot be followed to its end"},
        {"x.dll msgina.dll", "x.dll", "remove x.dll --force", STATUS_DONE, ""},
        // Names are what is loaded by them, and stay as they are spelled.
        {ALL_DLLS, "wpnGina.dll LUM_Gina", "enable", STATUS_DONE, nullptr, "nothing to do"},
        {ALL_DLLS, "lum_gina", "disable", STATUS_DONE, ""},
        {ALL_DLLS, "C:\\winnt\\lum_gina.dll.", "disable", STATUS_DONE, ""},
        {ALL_DLLS, "lum_gina.dll wpnGina.dll ../ginas/qslogon", "remove WPNGINA", STATUS_DONE, "lum_gina.dll ../ginas/qslogon..."},
        {"LUM_GI~1.DLL msgina.dll", "LUM_GI~1.DLL", "disable", STATUS_UNCERTAIN, nullptr, "whether lum_gina.dll is in it cannot be told"},
        {"x.dll msgina.dll", "x.dll", "disable", STATUS_UNCERTAIN, nullptr, "whether lum_gina.dll is in it cannot be told"},
        // What keeps the machine from coming up is done when it must be.
        {WITHOUT_HOST, "msgina.dll", "enable", STATUS_REFUSED, nullptr, "lum_gina.dll, and there is no such DLL"},
        {WITHOUT_HOST, "msgina.dll", "enable --force", STATUS_BAD, "lum_gina.dll msgina.dll"},
        {WITHOUT_OTHERS, "lum_gina.dll PLinkGina.dll msgina.dll", "disable", STATUS_REFUSED, nullptr, "Winlogon loads PLinkGina.dll"},
        {WITHOUT_OTHERS, "lum_gina.dll PLinkGina.dll msgina.dll", "disable --force", STATUS_BAD, "PLinkGina.dll msgina.dll"},
    };
    // clang-format on
    SetRecord("rec.dll", "msgina.dll,0,0,0,0");
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string("[") + row.szChain + "] " + row.szCommand);
        SetDlls(row.szDlls);
        DeleteGinaKeys();
        SetValues(ValuesOf(row.szChain));
        const std::string before = RegistryChain();
        const CRun run = Change(std::string("chain ") + row.szCommand);
        EXPECT_EQ(row.status, run.status) << run.error;
        EXPECT_TRUE(Has(run.output + run.error, row.szSays)) << run.output << run.error;
        EXPECT_EQ(row.szResult != nullptr ? row.szResult : before, RegistryChain());
        if (row.status != STATUS_REFUSED) {
            EXPECT_EQ(row.status, Run("chain check").status) << "it tells whether the machine comes up now";
        }
    }
}

TEST_F(ChainCommands, EnableSetsTheRecommendedValuesThatAreMissing)
{
    const auto get = [](const WCHAR* szValue) { return GetValue(EVENT_SOURCE_KEY, szValue); };
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, EVENT_SOURCE_KEY);
    EXPECT_TRUE(Has(Run("chain enable --dry-run").output, "EventLog: (none) -> 1 (REG_DWORD)"));
    EXPECT_EQ("(none)", get(TEXT("TypesSupported")));
    EXPECT_FALSE(Has(Run("chain enable --dry-run --no-safe-start").output, "SafeStart"));
    const CRun run = Run("chain enable");
    EXPECT_TRUE(Has(run.output, "With the recommended settings")) << run.output;
    EXPECT_EQ("1", GetValue(OWN_KEY, TEXT("EventLog")));
    EXPECT_EQ("2", GetValue(OWN_KEY, TEXT("SafeStart")));
    EXPECT_EQ("7", get(TEXT("TypesSupported")));
    EXPECT_EQ("\"%SystemRoot%\\system32\\lum_gina.dll\"", get(TEXT("EventMessageFile")));
    // What an administrator has set stays, and events that were written before stay readable.
    SetDword(OWN_KEY, TEXT("EventLog"), 0);
    EXPECT_EQ(STATUS_DONE, Run("chain disable").status);
    EXPECT_FALSE(Has(Run("chain enable").output, "recommended"));
    EXPECT_EQ("0", GetValue(OWN_KEY, TEXT("EventLog")));
    EXPECT_EQ("7", get(TEXT("TypesSupported")));
}

TEST_F(ChainCommands, CheckSaysWhetherTheMachineComesUp)
{
    SetRecord("rec.dll", "msgina.dll,0,0,0,1");
    const struct
    {
        const char* szDlls;
        Values values;
        ExitStatus status;
        const char* szFindings;
    } rows[] = {
        {ALL_DLLS, {}, STATUS_DONE, ""},
        {ALL_DLLS, ValuesOf("lum_gina.dll wpnGina.dll PLinkGina.dll MSGINA.DLL"), STATUS_DONE, ""},
        {"lum_gina.dll", {}, STATUS_BAD, "danger: Winlogon loads msgina.dll, and there is no such DLL\n"},
        {"msgina.dll=",
         {},
         STATUS_BAD,
         "danger: Winlogon loads msgina.dll, and ginas/msgina.dll is no whole DLL of this system\n"},
        {"msgina.dll wpnGina.dll=standin_gina_no_negotiate.dll", ValuesOf("wpnGina.dll msgina.dll"),
         STATUS_BAD,
         "danger: Winlogon loads wpnGina.dll, and ginas/wpnGina.dll is no GINA: it lacks WlxNegotiate\n"},
        // Of an older GINA nobody asks for more than it must have; of the host for all.
        {"msgina.dll=standin_gina_no_optional.dll", {}, STATUS_DONE, ""},
        {"msgina.dll lum_gina.dll=standin_gina_no_optional.dll", ValuesOf("lum_gina.dll msgina.dll"),
         STATUS_BAD,
         "danger: Winlogon loads lum_gina.dll, and ginas/lum_gina.dll is no GINA: it lacks "
         "WlxStartApplication, WlxScreenSaverNotify, WlxReconnectNotify, WlxDisconnectNotify\n"},
        {"msgina.dll lum_gina.dll=lum_gina.dll", ValuesOf("lum_gina.dll wpnGina.dll msgina.dll"), STATUS_DONE,
         "warning: lum_gina.dll loads wpnGina.dll, and there is no such DLL; lum_gina.dll makes do with "
         "msgina.dll\n"},
        {"lum_gina.dll=lum_gina.dll", ValuesOf("lum_gina.dll qslogon.dll"), STATUS_BAD,
         "danger: lum_gina.dll loads qslogon.dll, and there is no such DLL\n"},
        {ALL_DLLS, ValuesOf("lum_gina.dll"), STATUS_DONE,
         "warning: lum_gina.dll passes through to nothing; lum_gina.dll makes do with msgina.dll\n"},
        {ALL_DLLS, ValuesOf("wpnGina.dll"), STATUS_BAD, "danger: wpnGina.dll passes through to nothing\n"},
        // The host refuses to be entered anew. In front of it that is left to the GINA there.
        {ALL_DLLS, ValuesOf("lum_gina.dll wpnGina.dll lum_gina.dll"), STATUS_DONE,
         "warning: wpnGina.dll passes through to lum_gina.dll, which comes before it; lum_gina.dll makes do "
         "with msgina.dll\n"},
        {ALL_DLLS, ValuesOf("wpnGina.dll lum_gina.dll wpnGina.dll"), STATUS_BAD,
         "danger: lum_gina.dll passes through to wpnGina.dll, which comes before it\n"},
        {ALL_DLLS, ValuesOf("lum_gina.dll wpnGina.dll PLinkGina.dll wpngina.dll"), STATUS_BAD,
         "danger: PLinkGina.dll passes through to wpngina.dll, which comes before it\n"},
        {"x.dll msgina.dll lum_gina.dll=lum_gina.dll", ValuesOf("lum_gina.dll x.dll"), STATUS_UNCERTAIN,
         "doubt: x.dll is unknown, so where the chain goes on cannot be seen nor anything in it changed\n"},
        {ALL_DLLS,
         {{"Winlogon", ""}},
         STATUS_UNCERTAIN,
         "doubt: HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon, GinaDLL is "
         "there and names no GINA\n"},
        {ALL_DLLS, ValuesOf("lum_gina.dll BVGina01.DLL rec.dll msgina.dll"), STATUS_DONE,
         "warning: BVGina01.DLL wants to be the first GINA and is behind lum_gina.dll\n"
         "warning: rec.dll is recorded as incompatible with lum_gina.dll\n"},
    };
    for (const auto& row : rows) {
        SetDlls(row.szDlls);
        SetValues(row.values);
        const CRun run = Run("chain check");
        EXPECT_EQ(row.status, run.status) << run.output;
        EXPECT_EQ(row.szFindings, Findings(run.output));
    }
}

TEST_F(ChainCommands, AcceptEveryRemedyThatTheyOffer)
{
    SetRecord("rec.dll", "NULL,0,0,0,0");
    static const std::regex pattern("lumctl ((chain|plugins) [a-z]+( \"[^\"]*\"| [A-Za-z0-9_.]+)?)");
    const struct
    {
        const char* szDlls;
        Values values;
        const char* szResult; ///< after the first remedy each time
        const char* szPlugins = "";
    } rows[] = {
        {"msgina.dll", ValuesOf("x.dll"), ""},
        {"msgina.dll wpnGina.dll", ValuesOf("wpnGina.dll x.dll"), "wpnGina.dll msgina.dll"},
        {"msgina.dll lum_gina.dll=lum_gina.dll wpnGina.dll", ValuesOf("lum_gina.dll wpnGina.dll x.dll"),
         "lum_gina.dll wpnGina.dll msgina.dll"},
        {"msgina.dll lum_gina.dll=lum_gina.dll", ValuesOf("lum_gina.dll x.dll"), "lum_gina.dll msgina.dll"},
        {"msgina.dll", ValuesOf("rec.dll"), ""},
        {"msgina.dll", ValuesOf("lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll"), ""},
        {"msgina.dll", ValuesOf("wpnGina.dll PLinkGina.dll wpnGina.dll"), ""},
        {"msgina.dll", ValuesOf("lum_gina.dll lum_gina.dll"), ""},
        {"msgina.dll", ValuesOf("lum_gina.dll wpnGina.dll"), ""},
        {"msgina.dll lum_gina.dll=lum_gina.dll", {{"Winlogon", ""}}, "lum_gina.dll msgina.dll"},
        {"msgina.dll lum_gina.dll=lum_gina.dll", ValuesOf("lum_gina.dll msgina.dll"),
         "lum_gina.dll msgina.dll", " a.dll,x y.dll,b.dll"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szResult);
        SetDlls(row.szDlls);
        DeleteGinaKeys();
        SetValues(row.values);
        SetString(OWN_KEY, TEXT("Plugins"), Widen(row.szPlugins).c_str());
        std::smatch remedy;
        std::string said = Run("chain check").output;
        for (int nSteps = 0; nSteps < 5 && std::regex_search(said, remedy, pattern); ++nSteps) {
            const Values before = GetValues();
            const CRun run = Run(remedy[1]);
            EXPECT_TRUE(run.status == STATUS_DONE || run.status == STATUS_BAD) << remedy[1] << run.error;
            EXPECT_TRUE(remedy[2] == "plugins" || before != GetValues()) << remedy[1];
            said = Run("chain check").output;
        }
        EXPECT_EQ("The next boot is safe.\n", said);
        EXPECT_EQ(row.szResult, RegistryChain());
    }
}

TEST_F(ChainCommands, RefuseWhileAHostIsInService)
{
    SetValues(ValuesOf("lum_gina.dll msgina.dll"));
    SetDword(VOLATILE_KEY, TEXT("Enabled"), 1);
    const CRun run = Run("chain disable");
    EXPECT_EQ(STATUS_REFUSED, run.status);
    EXPECT_TRUE(Has(run.error, "is in service")) << run.error;
    EXPECT_TRUE(Has(run.error, "use lumctl gina disable")) << run.error;
    EXPECT_EQ(STATUS_REFUSED, Run("chain disable --force").status) << "that is about something else";
    EXPECT_EQ(ValuesOf("lum_gina.dll msgina.dll"), GetValues());
    SetDlls("msgina.dll");
    EXPECT_TRUE(Has(Run("chain check").output, "or lumctl gina disable\n"));
    EXPECT_TRUE(Has(Run("chain show --json").output, "\"inService\": true"));
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
            EXPECT_EQ(STATUS_DONE, Change("chain restore saved.reg").status);
            // A record is backed up only for a GINA in the chain, and so is its value.
            Values expected = saved;
            if (current.count("rec.dll") != 0 && saved.count("rec.dll") == 0) {
                expected["rec.dll"] = current.at("rec.dll");
            }
            EXPECT_EQ(expected, GetValues());
        }
    }
    EXPECT_EQ(STATUS_FAILED, Run("chain backup saved.reg").status) << "replaces an older one";

    // A chaining record comes back with its GINA.
    SetValues(ValuesOf("rec.dll msgina.dll"));
    EXPECT_EQ(STATUS_DONE, Run("chain backup --force saved.reg").status);
    const std::string record = GetValue(OWN_KEY, TEXT("rec.dll"));
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, VOLATILE_KEY);
    for (const char* szThere : {"", "x.dll", "qslogon.dll"}) {
        SetValues({{"rec.dll", szThere}});
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, OWN_KEY);
        // Only a value that is such a one already: the record might name any.
        EXPECT_EQ(*szThere == 'q' ? STATUS_DONE : STATUS_FAILED, Run("chain restore saved.reg").status);
    }
    EXPECT_EQ(record, GetValue(OWN_KEY, TEXT("rec.dll")));
    EXPECT_EQ(ValuesOf("rec.dll msgina.dll"), GetValues());
}

TEST_F(ChainCommands, RestoreRefusesWhatIsNoBackup)
{
    const std::string winlogon =
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon]\r\n";
    const std::string good = winlogon + "\"GinaDLL\"=\"msgina.dll\"\r\n";
    const std::string own = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\LUM\\Gina]\r\n";
    const std::string recorded = winlogon + "\"GinaDLL\"=\"r.dll\"\r\n";
    const std::string end = "; This backup is whole.";
    const struct
    {
        std::string text;
        const char* szError;
        bool bCutShort = false;
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
        {good + "[HKEY_CURRENT_USER\\Software]\r\n", "it has keys of HKEY_CURRENT_USER"},
        {good + "nonsense\r\n", "line 5: neither a key nor a value"},
        {winlogon + "\"GinaDLL\"=\"x.dll\"\r\n", "the machine would not come up"},
        {good + end.substr(0, end.size() - 1), "the file is no whole backup", true},
        {good + good, "Winlogon, GinaDLL is there twice"},
        // A chaining record leads to no other values.
        {recorded + "\"Userinit\"=\"msgina.dll\"\r\n" + own +
             "\"r.dll\"=\"SOFTWARE\\\\Microsoft\\\\Windows "
             "NT\\\\CurrentVersion\\\\Winlogon,Userinit,,0,0,0,0\"\r\n",
         "Winlogon, Userinit is no value of a chain"},
        {recorded + own +
             "\"Plugins\"=\"msgina.dll\"\r\n\"r.dll\"=\"SOFTWARE\\\\ORX\\\\LUM\\\\Gina,Plugins,,0,0,0,"
             "0\"\r\n",
         "Gina, Plugins is no value of a chain"},
        {recorded + own +
             "\"r.dll\"=\"SOFTWARE\\\\Run,r,,0,0,0,0\"\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Run]\r\n\"r\"=\"x."
             "exe\"\r\n",
         "SOFTWARE\\Run holds nothing of a chain"},
        {good + own + "\"r.dll\"=\"SOFTWARE\\\\Run,r,,0,0,0,0\"\r\n", "Gina, r.dll is no value of a chain"},
    };
    SetValues(ValuesOf("wpnGina.dll msgina.dll"));
    const Values before = GetValues();
    for (const auto& row : rows) {
        WriteFile("bad.reg", "Windows Registry Editor Version 5.00\r\n\r\n" + row.text +
                                 (row.bCutShort ? "" : "\r\n" + end));
        EXPECT_NE(STATUS_DONE, Run("chain restore bad.reg --dry-run").status);
        const CRun run = Run("chain restore bad.reg");
        EXPECT_NE(STATUS_DONE, run.status);
        EXPECT_TRUE(Has(run.error, row.szError)) << run.error;
        EXPECT_EQ(before, GetValues());
    }
    EXPECT_EQ(STATUS_FAILED, Run("chain restore none.reg").status);
}

TEST_F(ChainCommands, AValueThatIsNoTextIsNamedAndKept)
{
    SetValues(ValuesOf("wpnGina.dll"));
    SetDword(TEXT("SOFTWARE\\Tamsin\\Airlink\\wpnGina"), TEXT("OldGinaDLL"), 'x');
    const std::string findings = Run("chain check").output;
    EXPECT_EQ("danger: wpnGina.dll passes through to nothing that is a text: HKEY_LOCAL_MACHINE\\SOFTWARE\\"
              "Tamsin\\Airlink\\wpnGina, OldGinaDLL is 120 (REG_DWORD)\n",
              Findings(findings));
    EXPECT_EQ(STATUS_UNCERTAIN, Run("chain disable").status) << "the host may be what it names";
    EXPECT_EQ(STATUS_DONE, Run("chain backup --force saved.reg").status);
    SetValues(ValuesOf("wpnGina.dll"));
    const CRun run = Run("chain restore saved.reg");
    EXPECT_EQ(STATUS_BAD, run.status) << run.error;
    EXPECT_EQ(findings, Run("chain check").output);
}

TEST_F(ChainCommands, AValueThatIsNoTextIsTakenForNoName)
{
    // What is behind the library falls back to the system's own GINA.
    SetValues(ValuesOf("lum_gina.dll"));
    SetDword(OWN_KEY, TEXT("GinaDLL"), 'x');
    EXPECT_FALSE(Has(Run("chain show").output, " 2  "));
    EXPECT_TRUE(Has(Run("chain check").output, "(REG_DWORD); lum_gina.dll makes do with msgina.dll"));
    EXPECT_EQ(STATUS_DONE, Run("chain check").status);
    EXPECT_EQ(STATUS_DONE, Run("chain disable --force").status);
    EXPECT_EQ("(none)", GetValue(WINLOGON_KEY, WINLOGON_GINA_DLL));

    const BYTE text[] = {'x', 0, 0, 0};
    SetBytes(WINLOGON_KEY, WINLOGON_GINA_DLL, REG_BINARY, text, sizeof(text));
    const std::string shown = Run("chain show").output;
    EXPECT_TRUE(Has(shown, ", taken here for none\n 1  msgina.dll ")) << shown;
    EXPECT_TRUE(Has(shown, "Which GINA Winlogon loads is not known")) << shown;
    const CRun check = Run("chain check");
    EXPECT_EQ(STATUS_BAD, check.status);
    EXPECT_TRUE(
        Has(check.output, "delete this value: Winlogon then loads msgina.dll, or lumctl chain enable"));
    EXPECT_EQ(STATUS_UNCERTAIN, Run("chain disable --force").status);
    EXPECT_EQ(STATUS_DONE, Run("chain enable").status);
    EXPECT_EQ(ValuesOf("lum_gina.dll msgina.dll"), GetValues());
}

TEST_F(ChainCommands, CheckSaysWhatIsWrongWithTheSettings)
{
    SetDlls("msgina.dll lum_gina.dll=lum_gina.dll a.dll=pass_plugin.dll");
    SetValues(ValuesOf("lum_gina.dll msgina.dll"));
    SetString(OWN_KEY, TEXT("Plugins"), TEXT("a.dll,,msgina.dll,A,x.dll"));
    SetString(OWN_KEY, TEXT("Timeout"), TEXT("5"));
    SetDword(OWN_KEY, TEXT("RequiredPlugins"), 5);
    const CRun run = Run("chain check");
    EXPECT_EQ(STATUS_DONE, run.status);
    const std::string own = "warning: HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\LUM\\Gina, ";
    EXPECT_TRUE(Has(run.output, own + "RequiredPlugins is ")) << run.output;
    EXPECT_TRUE(Has(run.output, own + "Timeout is \"5\" and no number (REG_DWORD)\n")) << run.output;
    EXPECT_TRUE(Has(run.output, "the plugin A is configured twice\n")) << run.output;
    EXPECT_TRUE(Has(run.output, "goes without the plugin x.dll: there is no such DLL\n")) << run.output;
    EXPECT_TRUE(Has(run.output, "is no plugin: it lacks LUM")) << run.output;
    EXPECT_FALSE(Has(run.output, "the plugin a.dll")) << run.output;
    SetString(OWN_KEY, TEXT("Plugins"), Widen(std::string(260, 'x')).c_str());
    EXPECT_TRUE(Has(Run("chain check").output, "Plugins is longer than 259 characters"));
}

TEST_F(ChainCommands, ANameThatIsTooLongIsShownAndRefused)
{
    const std::string name(300, 'x');
    SetValues({{"Winlogon", "\x1B" + name}});
    EXPECT_TRUE(Has(Run("chain show").output, "GinaDLL = \"\\x1b" + name + '"'));
    const CRun check = Run("chain check");
    EXPECT_EQ(STATUS_BAD, check.status);
    EXPECT_TRUE(Has(check.output, "GinaDLL is a name of more than 259 characters")) << check.output;
    EXPECT_EQ(STATUS_REFUSED, Run("chain enable").status);
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
              "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ORX\\KVS\\Gina]\r\n\"GinaDLL\"=-\r\n\r\n"
              "; This backup is whole.\r\n",
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
              "  ],\n"
              "  \"dllDirectories\": [\n"
              "    \"ginas\"\n"
              "  ],\n"
              "  \"dllDirectoriesDoubt\": null\n"
              "}\n",
              Run("chain check --json").output);
    SetString(WINLOGON_KEY, WINLOGON_GINA_DLL, TEXT("\u00E9\"\\.dll"));
    const std::string shown = Run("chain show --json").output;
    EXPECT_TRUE(Has(shown, "\"text\": \"\\u00e9\\\"\\\\.dll\"")) << shown;
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
        {"chain show -- --dry-run", "chain show takes no --dry-run"},
        {"chain show --json=yes", "--json takes no value"},
        {"chain show --system=", "--system needs a value"},
        {"chain show --hive A --registry b", "--hive and --registry name two machines"},
        {"chain show --system nowhere", "--system: there is no directory nowhere"},
    };
    for (const auto& row : rows) {
        const CRun run = RunLumctl(SplitWords(row.szCommandLine));
        EXPECT_EQ(STATUS_USAGE, run.status) << row.szCommandLine;
        EXPECT_EQ(row.szError, run.error);
    }
    EXPECT_EQ(0u, RunLumctl({"-h"}).output.find("Usage: lumctl COMMAND"));
    EXPECT_EQ(0u, RunLumctl({"--version"}).output.find("lumctl 1."));
}

} // namespace
