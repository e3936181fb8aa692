#include "LUMRegistry.h"
#include "TestMachine.h"

namespace {

constexpr WCHAR PLUGINS[] = TEXT("Plugins");

class LUMRegistry : public CTestMachine
{
protected:
    static std::string Entries(CLUMRegistry& registry)
    {
        std::string text;
        const DWORD dwPlugins = registry.GetNumPlugins(true);
        for (DWORD dwIndex = 0; dwIndex < dwPlugins; ++dwIndex) {
            WCHAR szPlugin[260];
            EXPECT_TRUE(registry.GetPlugin(szPlugin, 260, dwIndex));
            text += "[" + Narrow(szPlugin) + "]";
        }
        return text;
    }
};

TEST_F(LUMRegistry, PluginsAreParsed)
{
    CLUMRegistry registry(LUM_GINA_APP, LUM_GINA_MTM);
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},
        {"a.dll,b.dll", "[a.dll][b.dll]"},
        {"a.dll,,b.dll", "[a.dll][][b.dll]"},
        {"a.dll,", "[a.dll][]"},
        {",", "[][]"},
        {" a.dll ", "[ a.dll ]"},
    };
    for (const auto& [szValue, szEntries] : rows) {
        SetString(OWN_KEY, PLUGINS, Widen(szValue).c_str());
        SetTraceMask(LEVEL_NOTIFICATION);
        ClearLog();
        EXPECT_EQ(szEntries, Entries(registry)) << szValue;
        EXPECT_EQ(*szValue == 0,
                  Log() == Lines{"[NOTIFICATION] No plugins where found for LUM Gina to load"});
        SetTraceMask(LEVEL_WARNING);
    }
    // Whatever bytes somebody has left there.
    struct
    {
        DWORD dwType;
        std::string text;
        DWORD cbExtra; ///< of the character behind the text
        const char* szEntries;
    } const bytes[] = {
        {REG_BINARY, "a.dll,b.dll", 0, "[a.dll][b.dll]"},
        {REG_MULTI_SZ, "a.dll,b.dll", 1, "[a.dll][b.dll]"},
        {REG_DWORD, "ab", 0, "[ab]"},
        {REG_EXPAND_SZ, "%p%.dll", sizeof(WCHAR), "[%p%.dll]"},
        {REG_BINARY, "", 1, ""},
    };
    for (const auto& row : bytes) {
        const std::basic_string<WCHAR> text = Widen(row.text);
        SetBytes(OWN_KEY, PLUGINS, row.dwType, text.c_str(),
                 static_cast<DWORD>(text.size() * sizeof(WCHAR)) + row.cbExtra);
        EXPECT_EQ(row.szEntries, Entries(registry)) << row.text;
    }
    // More than the configuration takes: nothing is loaded, and nothing is overwritten.
    const std::string tooLong = "a.dll," + std::string(254, 'x');
    SetString(OWN_KEY, PLUGINS, Widen(tooLong).c_str());
    EXPECT_EQ("", Entries(registry));
    EXPECT_FALSE(registry.AddPlugin(TEXT("c.dll")));
    EXPECT_TRUE(registry.RemovePlugin(TEXT("a.dll")));
    EXPECT_EQ('"' + tooLong + '"', GetValue(OWN_KEY, PLUGINS));

    WCHAR szPlugin[4];
    SetString(OWN_KEY, PLUGINS, TEXT("abcdef"));
    EXPECT_EQ(1u, registry.GetNumPlugins(true));
    EXPECT_TRUE(registry.GetPlugin(szPlugin, 4, 0));
    EXPECT_EQ("abc", Narrow(szPlugin));
    EXPECT_EQ(1, Count("[WARNING] String length to long, String: abcdef"));
    EXPECT_FALSE(registry.GetPlugin(szPlugin, 4, 1));
    EXPECT_FALSE(registry.GetPlugin(nullptr, 4, 0));
}

TEST_F(LUMRegistry, PluginsAreEdited)
{
    CLUMRegistry registry(LUM_GINA_APP, LUM_GINA_MTM);
    const std::string longName(250, 'l');
    struct
    {
        std::string before;
        bool bAdd;
        std::string name;
        std::string after;
    } const rows[] = {
        {"a.dll,b.dll", true, "c.dll", "a.dll,b.dll,c.dll"},
        {"", true, "c.dll", "c.dll"},
        {"a.dll", true, "A.DLL", "a.dll"},
        {longName, true, "ninechars.dll", (longName + ",ninechars.dll").substr(0, 259)},
        {"a.dll,b.dll,c.dll", false, "b.dll", "a.dll,c.dll"},
        {"a.dll,b.dll,c.dll", false, "C.dll", "a.dll,b.dll"},
        {"a.dll,b.dll,c.dll", false, "a.dll", "b.dll,c.dll"},
        {"a.dll", false, "a.dll", ""},
        {"a.dll", false, "x.dll", "a.dll"},
        {"xab.dll,ab.dll", false, "ab.dll", "xab.dll"},
        {"a.dll,,a.dll", false, "a.dll", ",a.dll"},
        {"a.dll,,b.dll", false, "b.dll", "a.dll,"},
        {",a.dll", false, "a.dll", ""},
        {"a.dll,", false, "a.dll", ""},
        {"a.dll,,", false, "a.dll", ","},
        {"a.dll,", true, "c.dll", "a.dll,,c.dll"},
        {",", true, "c.dll", ",,c.dll"},
        {std::string(259, 'l'), true, "c.dll", std::string(259, 'l')},
        {longName + ",b.dll", false, "b.dll", longName},
        {"b.dll," + longName, false, longName, "b.dll"},
    };
    for (const auto& row : rows) {
        SetString(OWN_KEY, PLUGINS, Widen(row.before).c_str());
        const std::basic_string<WCHAR> name = Widen(row.name);
        EXPECT_TRUE(row.bAdd ? registry.AddPlugin(name.c_str()) : registry.RemovePlugin(name.c_str()));
        EXPECT_EQ('"' + row.after + '"', GetValue(OWN_KEY, PLUGINS)) << row.before << " " << row.name;
    }
    EXPECT_FALSE(registry.AddPlugin(nullptr));
    EXPECT_FALSE(registry.RemovePlugin(nullptr));
}

} // namespace
