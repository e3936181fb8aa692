#include "DllStamp.h"
#include "LumctlMachine.h"
#include "SafeStartNames.h"
#include "machine/DllDirectories.h"

namespace {

/// The registry of a machine on which no host runs, and its plugins.
class PluginCommands : public CLumctlMachine
{
protected:
    PluginCommands()
    {
        SetValues(ValuesOf("lum_gina.dll msgina.dll"));
        SetDlls("lum_gina.dll=lum_gina.dll msgina.dll a.dll=pass_plugin.dll b.dll=pass_plugin.dll");
    }
    ~PluginCommands() override
    {
        for (const WCHAR* szKey : {LEFT_OUT_KEY, START_KEY}) {
            RegDeleteKeyW(HKEY_LOCAL_MACHINE, szKey);
        }
    }

    static bool Says(const CRun& run, const char* szText)
    {
        return (run.output + run.error).find(szText) != std::string::npos;
    }
};

TEST_F(PluginCommands, ChangeTheRegistryOrSayWhyNot)
{
    const std::string longest(253, 'x');
    const struct
    {
        std::string before;
        std::string command;
        ExitStatus status;
        std::string after;
        const char* szSays;
    } rows[] = {
        {"", "add a.dll", STATUS_DONE, "a.dll", "at the next start a.dll is loaded"},
        {"b.dll", "add a", STATUS_DONE, "b.dll,a", "Plugins: \"b.dll\" -> \"b.dll,a\""},
        {"b.dll", "add a.dll --dry-run", STATUS_DONE, "b.dll", "Nothing was written"},
        {"b.dll,A.dll", "add a.DLL", STATUS_DONE, "b.dll,A.dll", "nothing to do"},
        {"a.dll", "add a", STATUS_REFUSED, "a.dll", "is configured already, as a.dll"},
        {"", "add x.dll", STATUS_REFUSED, "", "there is no such DLL"},
        {"", "add x.dll --force", STATUS_DONE, "x.dll", "x.dll is NOT loaded: there is no such DLL"},
        {"", "add msgina.dll", STATUS_REFUSED, "", "is no plugin: it lacks LUMNegotiate, LUMQueryPlugin"},
        {"", "add a.dll,b.dll --force", STATUS_USAGE, "", "has no comma"},
        {longest, "add a.dll", STATUS_DONE, longest + ",a.dll", "is loaded"},
        {longest + "x", "add a.dll --force", STATUS_FAILED, longest + "x", "longer than 259 characters"},
        {"a.dll,b.dll,c.dll", "remove B.dll", STATUS_DONE, "a.dll,c.dll", "is not loaded any more"},
        {"a.dll", "remove b.dll", STATUS_REFUSED, "a.dll", "b.dll is not configured"},
        {"a.dll", "remove A", STATUS_REFUSED, "a.dll", "A is not configured (its DLL is, as a.dll)"},
        {" a.dll,b.dll", "remove \" a.dll\"", STATUS_DONE, "b.dll", "is not loaded any more"},
        {"", "add \" a.dll\"", STATUS_USAGE, "", "no blank around it"},
        {"", "remove \"\"", STATUS_USAGE, "", "the name of the plugin is empty"},
        {"a.dll,,b.dll", "up b.dll", STATUS_DONE, "b.dll,a.dll", "is loaded earlier"},
        {"a.dll,b.dll", "down a.dll", STATUS_DONE, "b.dll,a.dll", "is loaded later"},
        {"a.dll,b.dll", "up a.dll", STATUS_DONE, "a.dll,b.dll", "is the first already"},
        {"a.dll,b.dll", "up c.dll", STATUS_REFUSED, "a.dll,b.dll", "c.dll is not configured"},
        {"a.dll", "add b.dll --now", STATUS_FAILED, "a.dll", "no host is in service"},
        {"a.dll", "add b.dll --now --in-service", STATUS_USAGE, "a.dll", "--now is done by the host"},
        {"a.dll", "retry a.dll", STATUS_DONE, "a.dll", "is not left out"},
        {"a.dll", "retry b.dll", STATUS_REFUSED, "a.dll", "b.dll is not configured"},
    };
    for (const auto& row : rows) {
        SetString(OWN_KEY, TEXT("Plugins"), Widen(row.before).c_str());
        const CRun run = Run("plugins " + row.command);
        EXPECT_EQ(row.status, run.status) << row.command << run.error;
        EXPECT_TRUE(Says(run, row.szSays)) << row.command << run.output << run.error;
        EXPECT_EQ('"' + row.after + '"', GetValue(OWN_KEY, TEXT("Plugins"))) << row.command;
    }
    EXPECT_EQ(STATUS_USAGE, RunLumctl({"plugins", "add", "a\t.dll"}).status);
    SetBytes(OWN_KEY, TEXT("Plugins"), REG_EXPAND_SZ, TEXT("a"), 2 * sizeof(WCHAR));
    EXPECT_TRUE(Says(Run("plugins add b.dll"), "-> \"a,b.dll\" (REG_EXPAND_SZ)"));
    SetDword(OWN_KEY, TEXT("Plugins"), 5);
    SetString(LEFT_OUT_KEY, TEXT("a.dll"), TEXT("0"));
    EXPECT_TRUE(Says(Run("plugins retry a.dll --dry-run"), "a.dll: \"0\" -> (none)"));
    EXPECT_EQ(STATUS_REFUSED, Run("plugins add a.dll --force").status);
    EXPECT_EQ("5", GetValue(OWN_KEY, TEXT("Plugins")));
    SetString(OWN_KEY, TEXT("Plugins"), TEXT("a.dll"));
    SetDword(VOLATILE_KEY, TEXT("Enabled"), 1);
    EXPECT_EQ(STATUS_REFUSED, Run("plugins remove a.dll").status);
    EXPECT_EQ(STATUS_DONE, Run("plugins remove a.dll --in-service").status);
}

TEST_F(PluginCommands, ShowWhoIsLeftOutAndBringItBack)
{
    SetString(OWN_KEY, TEXT("Plugins"), TEXT("a.dll,b.dll"));
    SetDword(OWN_KEY, SAFE_START, 2);
    const std::basic_string<WCHAR> stamp = GetDllStamp(TEXT("ginas/a.dll"));
    SetString(LEFT_OUT_KEY, TEXT("a.dll"), TEXT("0"));
    EXPECT_FALSE(Says(Run("plugins list"), "left out")) << "its DLL has changed";
    EXPECT_NE(LooksWhereWinlogonLooks(), Says(RunLumctl({"plugins", "list"}), "unless it has changed"));
    SetString(START_KEY, IN_PLUGIN, TEXT("A"));
    SetString(START_KEY, IN_PLUGIN_STAMP, stamp.c_str());
    SetDword(START_KEY, IN_PLUGIN_COUNT, 2);
    EXPECT_TRUE(Says(Run("plugins list"), "left out")) << "by the next start";
    SetDword(START_KEY, IN_PLUGIN_COUNT, 1);
    SetString(LEFT_OUT_KEY, TEXT("a.dll"), stamp.c_str());
    for (const char* szCommand : {"plugins list", "status"}) {
        const CRun run = Run(szCommand);
        EXPECT_TRUE(Says(run, "NOT loaded: left out, since 2 starts in a row ended in it")) << run.output;
        EXPECT_TRUE(Says(run, "The last start ended in A")) << run.output;
    }
    SetString(OWN_KEY, TEXT("Plugins"), TEXT("b.dll"));
    EXPECT_TRUE(Says(Run("plugins add a.dll"), "at the next start a.dll is NOT loaded: left out"));
    SetString(OWN_KEY, REQUIRED_PLUGINS, TEXT("b, A"));
    EXPECT_FALSE(Says(Run("plugins list"), "left out"));
    SetDword(OWN_KEY, NO_PLUGINS, 1);
    const CRun without = Run("plugins list");
    EXPECT_TRUE(Says(without, "NOT loaded: NoPlugins is set"));
    EXPECT_TRUE(Says(without, "NoPlugins is set: the next start loads no plugin")) << without.output;

    EXPECT_EQ(STATUS_DONE, Run("plugins retry a").status);
    EXPECT_EQ("(none)", GetValue(LEFT_OUT_KEY, TEXT("a.dll")));
    EXPECT_EQ("(none)", GetValue(START_KEY, IN_PLUGIN));
    EXPECT_EQ("(none)", GetValue(START_KEY, IN_PLUGIN_COUNT));
}

TEST_F(PluginCommands, ChangeTheHiveOfAStoppedMachine)
{
    const WCHAR* const keys[] = {TEXT("DEAD\\ORX\\LUM\\Gina\\Volatile"), TEXT("DEAD\\ORX\\LUM\\Gina"),
                                 TEXT("DEAD\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon")};
    SetString(keys[1], TEXT("Plugins"), TEXT("a.dll"));
    SetString(keys[2], TEXT("GinaDLL"), TEXT("lum_gina.dll"));
    SetDword(keys[0], TEXT("Enabled"), 1);
    SetDword(VOLATILE_KEY, TEXT("Enabled"), 1);
    const Values before = GetValues();
    const struct
    {
        const char* szCommand;
        ExitStatus status;
        const char* szSays;
    } rows[] = {
        {"plugins add b.dll --hive DEAD", STATUS_DONE, "HKEY_LOCAL_MACHINE\\DEAD\\ORX\\LUM\\Gina\n"},
        {"plugins list --hive=DEAD --check", STATUS_DONE, " 2  b.dll"},
        {"plugins add x.dll --hive DEAD --force", STATUS_DONE, "x.dll is NOT loaded"},
        {"plugins list --hive DEAD --check", STATUS_BAD, "there is no such DLL"},
        {"status --hive DEAD", STATUS_BAD, "Host         not in service"},
        {"chain check --hive DEAD", STATUS_DONE, "goes without the plugin x.dll: there is no such DLL"},
        {"plugins remove b.dll --hive DEAD", STATUS_DONE, "b.dll is not loaded any more"},
        {"chain backup hive.reg --force --hive DEAD", STATUS_DONE, "has been backed up"},
        {"chain disable --hive DEAD", STATUS_DONE, "Written"},
        {"chain restore hive.reg --hive DEAD", STATUS_DONE, "GinaDLL: (none) -> \"lum_gina.dll\""},
        {"chain disable --hive DEAD", STATUS_DONE, "Written"},
        {"chain show --hive DEAD", STATUS_DONE, "lum_gina.dll is not in it"},
        {"chain enable --hive DEAD", STATUS_DONE, "EventLog: (none) -> 1"},
        {"chain show --hive SOFTWARE", STATUS_USAGE, "a key right below HKEY_LOCAL_MACHINE"},
        {"plugins list --hive GONE", STATUS_FAILED,
         "the registry has no key HKEY_LOCAL_MACHINE\\GONE\\Micro"},
        {"chain show --hive GONE", STATUS_FAILED, "the registry has no key HKEY_LOCAL_MACHINE\\GONE\\Micro"},
    };
    for (const auto& row : rows) {
        const CRun run = Run(row.szCommand);
        EXPECT_EQ(row.status, run.status) << row.szCommand << run.error;
        EXPECT_TRUE(Says(run, row.szSays)) << row.szCommand << run.output << run.error;
    }
    EXPECT_EQ(before, GetValues());
    EXPECT_EQ("\"a.dll,x.dll\"", GetValue(keys[1], TEXT("Plugins")));
    EXPECT_EQ("\"\"", GetValue(OWN_KEY, TEXT("Plugins")));
    EXPECT_EQ(STATUS_USAGE, RunLumctl(SplitWords("chain check --hive DEAD")).status) << "whose DLLs?";
    const CRun shown = RunLumctl(SplitWords("chain show --hive DEAD"));
    EXPECT_TRUE(Says(shown, "DLLs were looked for in ")) << shown.output;
    for (const WCHAR* szKey : {keys[0], keys[1], TEXT("DEAD\\ORX\\LUM"), TEXT("DEAD\\ORX"), keys[2],
                               TEXT("DEAD\\Microsoft\\Windows NT\\CurrentVersion"),
                               TEXT("DEAD\\Microsoft\\Windows NT"), TEXT("DEAD\\Microsoft"), TEXT("DEAD")})
    {
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, szKey);
    }
}

} // namespace
