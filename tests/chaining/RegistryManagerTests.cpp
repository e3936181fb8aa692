#include "ChainMachine.h"
#include "Exceptions.h"

namespace {

class RegistryManager : public CChainMachine
{
protected:
    RegistryManager()
    {
        SetRecord("rec.dll", "wpnGina.dll,0,0,0,0");
        SetRecord("nodef.dll", "NULL,0,0,0,0");
        SetRecord("inc.dll", "x.dll,0,0,0,1");
        SetRecord("bad.dll", "msgina.dll,0,0,0");
        SetString(OWN_KEY, TEXT("term.dll"), TEXT("NULL,NULL,NULL,1,1,0,0"));
    }
};

TEST_F(RegistryManager, FollowsTheChainAndRepairsIt)
{
    struct
    {
        const char* szValues;
        const char* szChain;
        const char* szRepaired = nullptr; ///< the chain that a host makes of it; null for the same
    } const rows[] = {
        {"", ""},
        {"MSGINA.DLL", "MSGINA.DLL"},
        {"sbgina_sim.dll", "sbgina_sim.dll"},
        {"trgina.dll", "trgina.dll"},
        {"wpnGina.dll qslogon.dll", "wpnGina.dll qslogon.dll"},
        {"lum_gina.dll wpnGina.dll PLinkGina.dll BVGina01.DLL kvs_gina.dll msgina.dll",
         "lum_gina.dll wpnGina.dll PLinkGina.dll BVGina01.DLL kvs_gina.dll msgina.dll"},
        {"rec.dll term.dll", "rec.dll term.dll"},
        {"x.dll", "x.dll..."},
        {"wpnGina.dll x.dll msgina.dll", "wpnGina.dll x.dll..."},
        {"bad.dll msgina.dll", "bad.dll..."},
        {"wpnGina.dll wpnGina.dll", "wpnGina.dll..."},
        {"wpnGina.dll rec.dll PLinkGina.dll rec.dll", "wpnGina.dll rec.dll PLinkGina.dll..."},
        {"lum_gina.dll wpnGina.dll", "lum_gina.dll wpnGina.dll...", "lum_gina.dll wpnGina.dll msgina.dll"},
        {"kvs_gina.dll", "kvs_gina.dll...", "kvs_gina.dll msgina.dll"},
        {"rec.dll", "rec.dll...", "rec.dll wpnGina.dll msgina.dll"},
        // Its default is before it already.
        {"wpnGina.dll rec.dll", "wpnGina.dll rec.dll...", "wpnGina.dll rec.dll msgina.dll"},
        {"inc.dll", "inc.dll...", "inc.dll x.dll..."},
    };
    for (const auto& row : rows) {
        Values values = ValuesOf(row.szValues);
        SetValues(values);
        EXPECT_EQ(row.szChain, ChainOf(*Build(true))) << row.szValues;
        EXPECT_EQ(values, GetValues()) << row.szValues;
        const std::string repaired = row.szRepaired != nullptr ? row.szRepaired : row.szChain;
        EXPECT_EQ(repaired, ChainOf(*Build())) << row.szValues;
        LeadThrough(SplitNames(row.szRepaired != nullptr ? repaired.substr(0, repaired.find("...")) : ""),
                    values);
        EXPECT_EQ(values, GetValues()) << row.szValues;
    }
    // An empty default is one.
    SetValues(ValuesOf("nodef.dll"));
    EXPECT_EQ("nodef.dll...", ChainOf(*Build()));
    EXPECT_EQ((Values{{"Winlogon", "nodef.dll"}, {"nodef.dll", ""}}), GetValues());
}

TEST_F(RegistryManager, TellsWhatIsWrongWithAChain)
{
    const auto unknown = [](const std::string& name) {
        return std::vector<std::string>{
            "An unknown gina has been encountered in the chaining list, GinaDLL: " + name,
            "The unknown gina is not listed in the registry, GinaDLL: " + name,
            "Gina chaining list is incomplete due to unknown Gina DLL, GinaDLL: " + name};
    };
    const struct
    {
        Values values;
        std::vector<std::string> warnings;
    } rows[] = {
        {ValuesOf("x.dll"), unknown("x.dll")},
        {ValuesOf("bad.dll"), unknown("bad.dll")},
        {ValuesOf("term.dll"),
         {"An unknown gina has been encountered in the chaining list, GinaDLL: term.dll"}},
        {ValuesOf("wpnGina.dll wpnGina.dll"),
         {"Gina chaining list is incomplete due to passthrough values that lead back to the same gina, "
          "GinaDLL: wpnGina.dll"}},
        // An empty value leads nowhere.
        {{{"Winlogon", "lum_gina.dll"}, {"lum_gina.dll", ""}},
         {"A gina has a bad passthrough value. Attempting to fix..., GinaDLL: lum_gina.dll, Passthrough "
          "value: "}},
    };
    for (const auto& row : rows) {
        SetValues(row.values);
        ClearLog();
        Build();
        // List operations and registry objects write more.
        std::vector<std::string> lines = Log();
        std::erase_if(lines, [](const auto& line) { return line.find("GinaDLL: ") == std::string::npos; });
        std::vector<std::string> warnings = row.warnings;
        for (std::string& warning : warnings) {
            warning = "[WARNING] " + warning;
        }
        EXPECT_EQ(warnings, lines);
    }
}

TEST_F(RegistryManager, SaysWhyItInsertsNothingUnknown)
{
    SetValues(ValuesOf("msgina.dll"));
    const auto manager = Build();
    for (const WCHAR* szName : {TEXT("x.dll"), TEXT("bad.dll"), static_cast<const WCHAR*>(nullptr)}) {
        EXPECT_FALSE(manager->InsertGinaIntoChainingList(szName, nullptr, true));
    }
    EXPECT_EQ(3, Count("[EXCEPTION] Can't insert gina dll into chaining list because it is unknown"));
}

TEST_F(RegistryManager, Answers)
{
    SetValues(ValuesOf("rec.dll msgina.dll"));
    const auto manager = Build();
    for (const WCHAR* szName : {TEXT("REC.dll"), TEXT("msgina.dll"), TEXT("wpngina.dll"), TEXT("x.dll")}) {
        const std::string name = Narrow(szName);
        EXPECT_EQ(name == "REC.dll" || name == "msgina.dll", manager->IsGinaInChainingList(szName)) << name;
        EXPECT_EQ(name != "x.dll", manager->IsGinaKnown(szName)) << name;
    }
    EXPECT_FALSE(manager->IsGinaKnown(nullptr));
    const auto compare = [&](const char* szOther, bool bEqual) {
        SetValues(ValuesOf(szOther));
        const auto other = Build(true);
        EXPECT_EQ(bEqual, *manager == *other) << szOther;
        EXPECT_EQ(!bEqual, *manager != *other) << szOther;
    };
    compare("rec.dll msgina.dll", true);
    compare("REC.DLL MSGINA.DLL", true);
    for (const char* szOther :
         {"", "msgina.dll", "rec.dll qslogon.dll", "rec.dll", "rec.dll wpnGina.dll msgina.dll"})
    {
        compare(szOther, false);
    }
}

TEST_F(RegistryManager, AnIncompleteChainEqualsNoCompleteOneAndIsNeverWritten)
{
    SetValues(ValuesOf("wpnGina.dll x.dll"));
    const auto incomplete = Build();
    SetString(OWN_KEY, TEXT("x.dll"), TEXT("NULL,NULL,NULL,1,1,0,0"));
    EXPECT_TRUE(*incomplete != *Build()) << "the same names";
    SetValues(ValuesOf("msgina.dll"));
    const auto values = GetValues();
    incomplete->WriteOutListToRegistry();
    EXPECT_EQ(values, GetValues());
}

} // namespace
