#include <functional>

#include "ChainMachine.h"
#include "chaining/ChainingRecord.h"
#include "chaining/KnownGinas.h"

namespace {

constexpr const WCHAR* APP = LUM_GINA_APP;
constexpr const WCHAR* MTM = LUM_GINA_MTM;
constexpr WCHAR WPN_KEY[] = TEXT("SOFTWARE\\Tamsin\\Airlink\\wpnGina");
constexpr WCHAR OLD_GINA_DLL[] = TEXT("OldGinaDLL");

class GinaChainingObject : public CChainMachine
{
protected:
    static CGinaChainingInfoObject Gina(const WCHAR* szGinaDLL, const WCHAR* szSubKey,
                                        const WCHAR* szOldGinaDLLKey, bool bTerminator)
    {
        return CGinaChainingInfoObject(APP, MTM, szGinaDLL, szSubKey, szOldGinaDLLKey, SYSTEM_GINA,
                                       bTerminator, false, false, false);
    }

    static CGinaChainingInfoObject Wpn() { return Gina(TEXT("wpnGina.dll"), WPN_KEY, OLD_GINA_DLL, false); }

    static std::string Passthrough(CGinaChainingInfoObject& gina)
    {
        WCHAR szName[260] = {};
        return gina.GetOldGinaDLL(szName, 260) ? Narrow(szName) : "(failed)";
    }
};

TEST_F(GinaChainingObject, NamesAreComparedWithoutCase)
{
    const CGinaChainingObject link(APP, MTM, TEXT("MSGINA.DLL"));
    const CGinaChainingObject copy(APP, MTM, &link);
    EXPECT_TRUE(link == TEXT("msgina.dll"));
    EXPECT_TRUE(link == copy);
    EXPECT_FALSE(link == TEXT("msgina.dl"));
    EXPECT_FALSE(link == static_cast<const WCHAR*>(nullptr));
    EXPECT_FALSE(link == CGinaChainingObject(APP, MTM, TEXT("msgina.dllx")));
    EXPECT_TRUE(Wpn() == TEXT("WPNGINA.DLL"));
}

TEST_F(GinaChainingObject, WhatIsMissingIsRefusedByName)
{
    CGinaChainingObject nameless(APP, MTM, TEXT("x"));
    nameless.m_szGinaDLL.Reset();
    const CGinaChainingObject* pNone = nullptr;
    const WCHAR* szNone = nullptr;
    struct
    {
        std::function<void()> make;
        const char* szArgument;
    } const rows[] = {
        {[&] { CGinaChainingObject(APP, MTM, szNone); }, "szGinaDLL"},
        {[&] { CGinaChainingObject(APP, MTM, TEXT("")); }, "szGinaDLL"},
        {[&] { CGinaChainingObject(APP, MTM, pNone); }, "pGinaChainingObject"},
        {[&] { CGinaChainingObject(APP, MTM, &nameless); }, "pGinaChainingObject->szGinaDLL"},
        {[&] { Gina(szNone, WPN_KEY, OLD_GINA_DLL, false); }, "szGinaDLL"},
        {[&] { Gina(TEXT("x"), nullptr, OLD_GINA_DLL, false); }, "szSubKey"},
        {[&] { Gina(TEXT("x"), TEXT(""), OLD_GINA_DLL, false); }, "szSubkey"},
        {[&] { Gina(TEXT("x"), WPN_KEY, nullptr, false); }, "szOldGinaDLLKey"},
        {[&] { Gina(TEXT("x"), WPN_KEY, TEXT(""), false); }, "szOldGinaDLLKey"},
        {[&] { CGinaChainingInfoObject(APP, MTM, TEXT("x"), szNone); }, "szCommaDelimitedStr"},
        {[&] { CGinaChainingInfoObject(APP, MTM, TEXT("x"), TEXT("")); }, "szCommaDelmitedStr"},
        {[&] { CGinaChainingInfoObject(APP, MTM, TEXT("x"), TEXT(",,,,,")); }, "szCommaDelimitedStr"},
    };
    for (const auto& row : rows) {
        ClearLog();
        EXPECT_THROW(row.make(), CBadArgException) << row.szArgument;
        EXPECT_EQ((std::vector<std::string>{
                      std::string("[EXCEPTION] A bad argument was provided, Argument: ") + row.szArgument}),
                  Log());
    }
    EXPECT_NO_THROW(Gina(TEXT("x"), nullptr, nullptr, true));
}

TEST_F(GinaChainingObject, RecordsAreRead)
{
    const std::string tenThousand(10000, 'k');
    const std::pair<std::string, std::string> rows[] = {
        {"SOFTWARE\\A,Old,msgina.dll,0,0,0,0", "SOFTWARE\\A|Old|msgina.dll|0000"},
        {"k,v,null,1,0,0,0", "k|v||1000"},
        {"NULL,nUlL,nulls,0,1,0,0", "||nulls|0100"},
        {",,,,,,", "|||0000"},
        {"k,v,d,2,-1,+3, 4x", "k|v|d|1111"},
        {"k,v,d,abc,-0,0x1,", "k|v|d|0000"},
        {"k,v,d,99999999999,4294967296,000,\t-00010", "k|v|d|1101"},
        {"k,v,d,1 0,- 1,+-1,.1", "k|v|d|1000"},
        {tenThousand + ",v,d,0,0,0," + std::string(10000, '7'), tenThousand + "|v|d|0001"},
        {"k,v,d,0,0,0", "(refused)"},
        {"k,v,d,0,0,0,0,", "(refused)"},
        {std::string(257, ','), "(refused)"},
        {tenThousand, "(refused)"},
    };
    const auto narrow = [](CChainingRecord::Text text) { return std::string(text.begin(), text.end()); };
    for (const auto& [record, fields] : rows) {
        std::string read = "(refused)";
        const std::basic_string<WCHAR> text = Widen(record);
        if (const auto result = ParseChainingRecord(text); result) {
            read = narrow(result->szSubKey) + "|" + narrow(result->szOldGinaDLLKey) + "|" +
                   narrow(result->szDefaultGinaDLL) + "|";
            for (const bool bFlag :
                 {result->bTerminator, result->bStandalone, result->bMustBeFirst, result->bIsIncompatible})
            {
                read += bFlag ? '1' : '0';
            }
        }
        EXPECT_EQ(fields, read) << record;
    }
}

TEST_F(GinaChainingObject, HostileRecordsMakeHarmlessGinas)
{
    for (const std::string& record :
         {std::string(10000, 'k') + ",v,d,0,0,0,0", std::string(",,,0,0,0,0"),
          std::string("\\\\,\\,\\,0,0,0,0"), "k," + std::string(10000, 'v') + ",,,,,"})
    {
        CGinaChainingInfoObject gina(APP, MTM, TEXT("x.dll"), Widen(record).c_str());
        EXPECT_EQ(nullptr, gina.m_pOldGinaDLL);
        EXPECT_EQ("(failed)", Passthrough(gina));
    }
    CGinaChainingInfoObject terminator(APP, MTM, TEXT("x.dll"),
                                       TEXT("SOFTWARE\\ORX\\LUM\\Gina,GinaDLL,d,1,0,0,0"));
    EXPECT_EQ(nullptr, terminator.m_pOldGinaDLL);
    EXPECT_EQ("(failed)", Passthrough(terminator));
    terminator.SetOldGinaDLL(TEXT("x.dll"));
    EXPECT_EQ("\"\"", GetValue(OWN_KEY, TEXT("GinaDLL")));
}

TEST_F(GinaChainingObject, PassthroughIsMadeWhenItIsWritten)
{
    CGinaChainingInfoObject gina = Wpn();
    EXPECT_EQ(nullptr, gina.m_pOldGinaDLL);
    ClearLog();
    EXPECT_EQ("(failed)", Passthrough(gina));
    gina.SetOldGinaDLL(nullptr);
    EXPECT_EQ((std::vector<std::string>{
                  "[EXCEPTION] Unable to read from registry, Registry Value: OldGinaDLL, Error: 0xffffffff",
                  "[WARNING] Client pushing value that is NULL"}),
              Log());
    EXPECT_EQ("(none)", GetValue(WPN_KEY, OLD_GINA_DLL));
    gina.SetOldGinaDLL(SYSTEM_GINA);
    EXPECT_EQ(1, Count("[WARNING] Had to create registry value with default setting. Should be initialized, "
                       "Value Name: OldGinaDLL"));
    EXPECT_EQ("\"msgina.dll\"", GetValue(WPN_KEY, OLD_GINA_DLL));
    SetString(WPN_KEY, OLD_GINA_DLL, TEXT("other.dll"));
    EXPECT_EQ("other.dll", Passthrough(gina));
    ClearLog();
    gina.SetOldGinaDLL(nullptr);
    EXPECT_EQ((std::vector<std::string>{"[WARNING] Client pushing value that is NULL",
                                        "[EXCEPTION] A bad argument was provided, Argument: szSrc"}),
              Log());
    EXPECT_EQ("other.dll", Passthrough(gina));
    EXPECT_NE(nullptr, Wpn().m_pOldGinaDLL);
}

TEST_F(GinaChainingObject, PassthroughOfAGinaThatWasInstalledAnew)
{
    SetString(WPN_KEY, OLD_GINA_DLL, SYSTEM_GINA);
    CGinaChainingInfoObject gina = Wpn();
    ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyW(HKEY_LOCAL_MACHINE, WPN_KEY));
    SetString(WPN_KEY, OLD_GINA_DLL, TEXT("lum_gina.dll"));
    gina.SetOldGinaDLL(TEXT("PLinkGina.dll"));
    EXPECT_EQ("\"PLinkGina.dll\"", GetValue(WPN_KEY, OLD_GINA_DLL));
    ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyW(HKEY_LOCAL_MACHINE, WPN_KEY));
    gina.SetOldGinaDLL(SYSTEM_GINA);
    EXPECT_EQ("(failed)", Passthrough(gina));
    EXPECT_EQ("(none)", GetValue(WPN_KEY, OLD_GINA_DLL)) << "what was uninstalled stays so";
}

TEST_F(GinaChainingObject, CopiesHaveAnObjectOfTheirOwn)
{
    SetString(OWN_KEY, TEXT("x.dll"), TEXT("next.dll"));
    // A record may lack what the table must have.
    for (const WCHAR* szRecord : {TEXT("SOFTWARE\\ORX\\LUM\\Gina,x.dll,null,0,0,1,1"), TEXT(",,,0,0,1,1")}) {
        auto original = std::make_unique<CGinaChainingInfoObject>(APP, MTM, TEXT("x.dll"), szRecord);
        CGinaChainingInfoObject copy(APP, MTM, original.get());
        const std::string passthrough = Passthrough(*original);
        const std::string subKey = Narrow(original->m_szSubKey);
        original.reset();
        EXPECT_EQ(passthrough, Passthrough(copy));
        EXPECT_EQ(subKey, Narrow(copy.m_szSubKey));
        EXPECT_TRUE(copy.m_bMustBeFirst && copy.m_bIsIncompatible);
        EXPECT_EQ("", Narrow(copy.m_szDefaultGinaDLL)) << "empty, not missing";
    }
}

} // namespace
