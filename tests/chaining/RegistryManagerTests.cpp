#include "ChainMachine.h"
#include "Exceptions.h"

namespace {

constexpr const char* BAD_PASSTHROUGH =
    "[WARNING] A gina has a bad passthrough value. Attempting to fix..., GinaDLL: ";

const WCHAR* Arg(const std::basic_string<WCHAR>& text)
{
    return text.empty() ? nullptr : text.c_str();
}

class RegistryManager : public CChainMachine
{
protected:
    /// The warnings about the chain, of which the list operations and registry objects write more.
    std::vector<std::string> ChainWarnings() const
    {
        std::vector<std::string> lines = Log();
        std::erase_if(lines,
                      [](const std::string& line) { return line.find("GinaDLL: ") == std::string::npos; });
        return lines;
    }
};

TEST_F(RegistryManager, FollowsTheChain)
{
    SetRecord("rec.dll", "msgina.dll,0,0,0,0");
    SetRecord("bad.dll", "msgina.dll,0,0,0");
    SetString(OWN_KEY, TEXT("term.dll"), TEXT("NULL,NULL,NULL,1,1,0,0"));
    struct
    {
        const char* szValues;
        const char* szChain;
    } const rows[] = {
        {"", ""},
        {"msgina.dll", "msgina.dll"},
        {"MSGINA.DLL", "MSGINA.DLL"},
        {"sbgina_sim.dll", "sbgina_sim.dll"},
        {"trgina.dll", "trgina.dll"},
        {"wpnGina.dll qslogon.dll", "wpnGina.dll qslogon.dll"},
        {"lum_gina.dll wpnGina.dll PLinkGina.dll BVGina01.DLL kvs_gina.dll msgina.dll",
         "lum_gina.dll wpnGina.dll PLinkGina.dll BVGina01.DLL kvs_gina.dll msgina.dll"},
        {"x.dll", "x.dll..."},
        {"wpnGina.dll x.dll msgina.dll", "wpnGina.dll x.dll..."},
        {"bad.dll msgina.dll", "bad.dll..."},
        {"rec.dll term.dll", "rec.dll term.dll"},
        {"wpnGina.dll wpnGina.dll", "wpnGina.dll..."},
        {"wpnGina.dll rec.dll PLinkGina.dll rec.dll", "wpnGina.dll rec.dll PLinkGina.dll..."},
        {"lum_gina.dll wpnGina.dll", "lum_gina.dll wpnGina.dll..."},
    };
    for (const auto& row : rows) {
        const Values values = ValuesOf(row.szValues);
        SetValues(values);
        EXPECT_EQ(row.szChain, ChainOf(*Build(true))) << row.szValues;
        EXPECT_EQ(values, GetValues()) << row.szValues;
    }
}

TEST_F(RegistryManager, RepairsPassthroughValues)
{
    SetRecord("rec.dll", "wpnGina.dll,0,0,0,0");
    SetRecord("nodef.dll", "NULL,0,0,0,0");
    SetRecord("inc.dll", "x.dll,0,0,0,1");
    struct
    {
        const char* szBroken;
        const char* szRepaired;
        bool bComplete;
    } const rows[] = {
        {"wpnGina.dll", "wpnGina.dll msgina.dll", true},
        {"kvs_gina.dll", "kvs_gina.dll msgina.dll", true},
        {"nodef.dll", "nodef.dll msgina.dll", true},
        {"rec.dll", "rec.dll wpnGina.dll msgina.dll", true},
        // Its default is before it already.
        {"wpnGina.dll rec.dll", "wpnGina.dll rec.dll msgina.dll", true},
        {"inc.dll", "inc.dll x.dll", false},
    };
    for (const auto& row : rows) {
        SetValues(ValuesOf(row.szBroken));
        EXPECT_EQ(std::string(row.szRepaired) + (row.bComplete ? "" : "..."), ChainOf(*Build()))
            << row.szBroken;
        EXPECT_EQ(ValuesOf(row.szRepaired), GetValues()) << row.szBroken;
    }
    // An empty value leads nowhere, too.
    SetValues({{"Winlogon", "lum_gina.dll"}, {"lum_gina.dll", ""}});
    EXPECT_EQ("lum_gina.dll...", ChainOf(*Build(true)));
    ClearLog();
    EXPECT_EQ("lum_gina.dll msgina.dll", ChainOf(*Build()));
    EXPECT_EQ(1, Count(std::string(BAD_PASSTHROUGH) + "lum_gina.dll, Passthrough value: "));
}

TEST_F(RegistryManager, TellsWhyAChainIsIncomplete)
{
    SetRecord("bad.dll", "msgina.dll,0,0,0");
    const auto lines = [this](const char* szChain) {
        SetValues(ValuesOf(szChain));
        ClearLog();
        Build(true);
        return ChainWarnings();
    };
    for (const char* szName : {"x.dll", "bad.dll"}) {
        EXPECT_EQ(
            (std::vector<std::string>{
                std::string(
                    "[WARNING] An unknown gina has been encountered in the chaining list, GinaDLL: ") +
                    szName,
                std::string("[WARNING] The unknown gina is not listed in the registry, GinaDLL: ") + szName,
                std::string("[WARNING] Gina chaining list is incomplete due to unknown Gina DLL, GinaDLL: ") +
                    szName}),
            lines(szName));
    }
    EXPECT_EQ(
        (std::vector<std::string>{"[WARNING] Gina chaining list is incomplete due to passthrough values that "
                                  "lead back to the same gina, GinaDLL: wpnGina.dll"}),
        lines("wpnGina.dll wpnGina.dll"));
}

TEST_F(RegistryManager, Inserts)
{
    SetRecord("rec.dll", "msgina.dll,0,0,0,0");
    SetRecord("bad.dll", "msgina.dll,0,0,0");
    SetString(OWN_KEY, TEXT("term.dll"), TEXT("NULL,NULL,NULL,1,1,0,0"));
    struct
    {
        const char* szBefore;
        const char* szGinaDLL;
        const char* szInsertBefore;
        bool bAtFront;
        const char* szAfter; ///< null when it is refused
    } const rows[] = {
        {"", "lum_gina.dll", "", true, "lum_gina.dll"},
        {"msgina.dll", "lum_gina.dll", "", true, "lum_gina.dll msgina.dll"},
        {"wpnGina.dll msgina.dll", "lum_gina.dll", "", true, "lum_gina.dll wpnGina.dll msgina.dll"},
        {"wpnGina.dll msgina.dll", "LUM_GINA.DLL", "MSGINA.dll", true, "wpnGina.dll LUM_GINA.DLL msgina.dll"},
        {"lum_gina.dll msgina.dll", "rec.dll", "lum_gina.dll", false, "rec.dll lum_gina.dll msgina.dll"},
        {"lum_gina.dll msgina.dll", "wpnGina.dll", "", false, "lum_gina.dll wpnGina.dll msgina.dll"},
        {"wpnGina.dll msgina.dll", "qslogon.dll", "", false, "wpnGina.dll qslogon.dll"},
        {"msgina.dll", "term.dll", "", false, "term.dll"},
        {"lum_gina.dll msgina.dll", "LUM_gina.dll", "", true, nullptr},
        {"lum_gina.dll msgina.dll", "wpnGina.dll", "PLinkGina.dll", false, nullptr},
        {"lum_gina.dll msgina.dll", "qslogon.dll", "msgina.dll", false, nullptr},
        {"lum_gina.dll msgina.dll", "x.dll", "", true, nullptr},
        {"lum_gina.dll msgina.dll", "bad.dll", "", true, nullptr},
        {"lum_gina.dll msgina.dll", "", "", true, nullptr},
        {"x.dll", "lum_gina.dll", "", true, nullptr},
        {"wpnGina.dll wpnGina.dll", "lum_gina.dll", "", true, nullptr},
    };
    for (const auto& row : rows) {
        SetValues(ValuesOf(row.szBefore));
        const auto manager = Build();
        const std::basic_string<WCHAR> gina = Widen(row.szGinaDLL);
        const std::basic_string<WCHAR> before = Widen(row.szInsertBefore);
        const std::string name = std::string(row.szBefore) + " + " + row.szGinaDLL;
        const std::string chain = row.szAfter != nullptr ? row.szAfter : ChainOf(*manager);
        EXPECT_EQ(row.szAfter != nullptr,
                  manager->InsertGinaIntoChainingList(Arg(gina), Arg(before), row.bAtFront))
            << name;
        EXPECT_EQ(chain, ChainOf(*manager)) << name;
        // The registry leads through the same GINAs; one that was last passes through to its default.
        const std::string suffix = chain == "lum_gina.dll" ? " msgina.dll" : "";
        EXPECT_EQ(chain + suffix, ChainOf(*Build(true))) << name;
    }
    EXPECT_EQ(3, Count("[EXCEPTION] Can't insert gina dll into chaining list because it is unknown"));
}

TEST_F(RegistryManager, TheFirstGinaMayBeATerminator)
{
    SetValues(ValuesOf("msgina.dll"));
    const auto manager = Build();
    EXPECT_TRUE(manager->InsertGinaIntoChainingList(TEXT("qslogon.dll"), nullptr, true));
    EXPECT_EQ("qslogon.dll msgina.dll", ChainOf(*manager));
    EXPECT_EQ("qslogon.dll", ChainOf(*Build(true)));
}

TEST_F(RegistryManager, AppendsBehindAChainWithoutAnEnd)
{
    SetValues({});
    const auto manager = Build();
    EXPECT_TRUE(manager->InsertGinaIntoChainingList(TEXT("wpnGina.dll"), nullptr, false));
    EXPECT_TRUE(manager->InsertGinaIntoChainingList(TEXT("kvs_gina.dll"), nullptr, false));
    EXPECT_EQ("wpnGina.dll kvs_gina.dll", ChainOf(*manager));
    // Nothing is made up for a GINA without a default.
    EXPECT_EQ(ValuesOf("wpnGina.dll kvs_gina.dll"), GetValues());
    EXPECT_TRUE(manager->InsertGinaIntoChainingList(TEXT("qslogon.dll"), nullptr, false));
    EXPECT_EQ(ValuesOf("wpnGina.dll kvs_gina.dll qslogon.dll"), GetValues());
}

TEST_F(RegistryManager, Removes)
{
    struct
    {
        const char* szBefore;
        const char* szGinaDLL;
        bool bRemoved;
        const char* szAfter;
        Values values; ///< those of the chain afterwards, passthrough values of other GINAs included
    } const rows[] = {
        {"lum_gina.dll msgina.dll", "lum_gina.dll", true, "", {{"lum_gina.dll", "msgina.dll"}}},
        {"lum_gina.dll wpnGina.dll msgina.dll",
         "LUM_GINA.dll",
         true,
         "wpnGina.dll msgina.dll",
         {{"Winlogon", "wpnGina.dll"}, {"wpnGina.dll", "msgina.dll"}, {"lum_gina.dll", "wpnGina.dll"}}},
        {"lum_gina.dll wpnGina.dll msgina.dll",
         "wpnGina.dll",
         true,
         "lum_gina.dll msgina.dll",
         {{"Winlogon", "lum_gina.dll"}, {"lum_gina.dll", "msgina.dll"}, {"wpnGina.dll", "msgina.dll"}}},
        {"lum_gina.dll qslogon.dll",
         "lum_gina.dll",
         true,
         "qslogon.dll",
         {{"Winlogon", "qslogon.dll"}, {"lum_gina.dll", "qslogon.dll"}}},
        {"lum_gina.dll wpnGina.dll qslogon.dll", "qslogon.dll", true, "lum_gina.dll wpnGina.dll",
         ValuesOf("lum_gina.dll wpnGina.dll msgina.dll")},
        {"msgina.dll", "msgina.dll", true, "", {}},
        {"lum_gina.dll msgina.dll", "wpnGina.dll", false, "lum_gina.dll msgina.dll",
         ValuesOf("lum_gina.dll msgina.dll")},
        {"", "lum_gina.dll", false, "", {}},
        {"lum_gina.dll x.dll", "lum_gina.dll", false, "lum_gina.dll x.dll...",
         ValuesOf("lum_gina.dll x.dll")},
    };
    for (const auto& row : rows) {
        SetValues(ValuesOf(row.szBefore));
        const auto manager = Build();
        ClearLog();
        const std::string name = std::string(row.szBefore) + " - " + row.szGinaDLL;
        EXPECT_EQ(row.bRemoved, manager->RemoveGinaFromChainingList(Widen(row.szGinaDLL).c_str())) << name;
        EXPECT_EQ(row.szAfter, ChainOf(*manager)) << name;
        EXPECT_EQ(row.values, GetValues()) << name;
        EXPECT_EQ(row.bRemoved && *row.szAfter == 0 ? 1 : 0, Count("[WARNING] Chaining list is empty"))
            << name;
    }
}

TEST_F(RegistryManager, EnablingAndDisablingIsARoundTrip)
{
    for (const char* szChain : {"wpnGina.dll PLinkGina.dll msgina.dll", "qslogon.dll"}) {
        SetValues(ValuesOf(szChain));
        const auto manager = Build();
        EXPECT_TRUE(manager->InsertGinaIntoChainingList(TEXT("lum_gina.dll"), nullptr, true));
        EXPECT_FALSE(manager->InsertGinaIntoChainingList(TEXT("lum_gina.dll"), nullptr, true));
        EXPECT_EQ(std::string("lum_gina.dll ") + szChain, ChainOf(*Build(true)));
        EXPECT_TRUE(manager->RemoveGinaFromChainingList(TEXT("lum_gina.dll")));
        EXPECT_EQ(szChain, ChainOf(*Build(true)));
    }
}

TEST_F(RegistryManager, Answers)
{
    SetRecord("rec.dll", "msgina.dll,0,0,0,0");
    SetValues(ValuesOf("rec.dll msgina.dll"));
    const auto manager = Build();
    ClearLog();
    for (const WCHAR* szName : {TEXT("REC.dll"), TEXT("msgina.dll"), TEXT("wpngina.dll"), TEXT("x.dll")}) {
        const std::string name = Narrow(szName);
        EXPECT_EQ(name == "REC.dll" || name == "msgina.dll", manager->IsGinaInChainingList(szName)) << name;
        EXPECT_EQ(name != "x.dll", manager->IsGinaKnown(szName)) << name;
    }
    EXPECT_FALSE(manager->IsGinaKnown(nullptr));
    const auto same = Build(true);
    EXPECT_TRUE(*manager == *same);
    EXPECT_FALSE(*manager != *same);
    SetValues(ValuesOf("REC.DLL MSGINA.DLL"));
    EXPECT_TRUE(*manager == *Build(true));
    for (const char* szOther :
         {"", "msgina.dll", "rec.dll qslogon.dll", "rec.dll", "rec.dll wpnGina.dll msgina.dll"})
    {
        SetValues(ValuesOf(szOther));
        EXPECT_TRUE(*manager != *Build(true)) << szOther;
        EXPECT_FALSE(*manager == *Build(true)) << szOther;
    }
    // The same names, but one chain leads on to nobody knows where.
    SetValues(ValuesOf("wpnGina.dll x.dll"));
    const auto incomplete = Build();
    SetString(OWN_KEY, TEXT("x.dll"), TEXT("NULL,NULL,NULL,1,1,0,0"));
    EXPECT_TRUE(*incomplete != *Build());
}

TEST_F(RegistryManager, AnIncompleteChainIsNeverWritten)
{
    SetValues(ValuesOf("wpnGina.dll x.dll"));
    const auto manager = Build();
    ASSERT_TRUE(manager->m_bChainIncomplete);
    SetValues(ValuesOf("msgina.dll"));
    const auto values = GetValues();
    manager->WriteOutListToRegistry();
    EXPECT_EQ(values, GetValues());
}

TEST_F(RegistryManager, NeedsBothRegistries)
{
    const auto make = [](CLUMRegistry* pConfiguration, CWinlogonRegistry* pWinlogon) {
        const CRegistryManager manager(LUM_GINA_APP, LUM_GINA_MTM, pConfiguration, pWinlogon, true);
    };
    EXPECT_THROW(make(nullptr, m_pWinlogon.get()), CBadArgException);
    EXPECT_THROW(make(m_pConfiguration.get(), nullptr), CBadArgException);
    EXPECT_EQ(1, Count("[EXCEPTION] A bad argument was provided, Argument: pLUMRegistry"));
    EXPECT_EQ(1, Count("[EXCEPTION] A bad argument was provided, Argument: pWinlogonRegistry"));
}

} // namespace
