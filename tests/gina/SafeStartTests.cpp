#include "DllStamp.h"
#include "HostMachine.h"
#include "SafeStartNames.h"

namespace {

constexpr WCHAR A[] = TEXT("test_plugin_a.dll");
constexpr WCHAR B[] = TEXT("test_plugin_b.dll");
const Lines WITHOUT_A = {"test_plugin_b.dll", "msgina.dll"};
const Lines WITHOUT_B = {"test_plugin_a.dll", "msgina.dll"};
const Lines ALL = {"test_plugin_a.dll", "test_plugin_b.dll", "msgina.dll"};

class SafeStart : public CHostMachine
{
protected:
    SafeStart()
    {
        SetString(OWN_KEY, TEXT("Plugins"), TEXT("test_plugin_a.dll,test_plugin_b.dll"));
        SetDword(OWN_KEY, SAFE_START, 2);
    }

    /// That many starts in a row ended inside a plugin.
    static void EndedIn(const WCHAR* szPlugin, DWORD dwStarts)
    {
        SetString(START_KEY, IN_PLUGIN, szPlugin);
        SetString(START_KEY, IN_PLUGIN_STAMP, GetDllStamp(szPlugin).c_str());
        SetDword(START_KEY, IN_PLUGIN_COUNT, dwStarts);
    }

public:
    static std::string Note(const WCHAR* szValue) { return GetValue(START_KEY, szValue); }
};

Lines s_notes;

void WINAPI TakeNotes(void*, const PluginRecord*)
{
    s_notes.push_back(SafeStart::Note(IN_PLUGIN) + SafeStart::Note(IN_PLUGIN_COUNT));
}

TEST_F(SafeStart, LeavesOutWhatEnoughStartsEndedIn)
{
    const struct
    {
        const char* szWhat;
        std::function<void()> set;
        Lines chain;
    } rows[] = {
        {"one start too few", [] { EndedIn(B, 1); }, ALL},
        {"its DLL has been replaced since",
         [] {
             EndedIn(B, 2);
             SetString(START_KEY, IN_PLUGIN_STAMP, TEXT("0 0"));
         },
         ALL},
        {"enough", [] { EndedIn(B, 2); }, WITHOUT_B},
        {"it stays out", [] {}, WITHOUT_B},
        {"off",
         [] {
             EndedIn(A, 2);
             SetDword(OWN_KEY, SAFE_START, 0);
         },
         ALL},
        {"a setting of another type", [] { SetString(OWN_KEY, SAFE_START, TEXT("2")); }, ALL},
        {"on again", [] { SetDword(OWN_KEY, SAFE_START, 2); }, WITHOUT_B},
        {"required by now", [] { SetString(OWN_KEY, REQUIRED_PLUGINS, TEXT("x, TEST_PLUGIN_B")); }, ALL},
        {"another is required", [] { SetString(OWN_KEY, REQUIRED_PLUGINS, A); }, WITHOUT_B},
        {"whoever is required cannot be read", [] { SetDword(OWN_KEY, REQUIRED_PLUGINS, 1); }, ALL},
        {"nobody is", [] { SetString(OWN_KEY, REQUIRED_PLUGINS, TEXT("")); }, WITHOUT_B},
        {"no plugins at all", [] { SetDword(OWN_KEY, NO_PLUGINS, 1); }, {"msgina.dll"}},
        {"some again", [] { SetDword(OWN_KEY, NO_PLUGINS, 0); }, WITHOUT_B},
        {"its DLL has changed", [] { SetString(LEFT_OUT_KEY, B, TEXT("0 0")); }, ALL},
        {"and it is not left out any more", [] {}, ALL},
        {"a count beyond reason", [] { EndedIn(A, 0xFFFFFFFF); }, WITHOUT_A},
    };
    for (const auto& row : rows) {
        row.set();
        Load();
        EXPECT_EQ(Chain(), row.chain) << row.szWhat;
        EXPECT_EQ(Note(IN_PLUGIN), "(none)") << row.szWhat;
    }
}

TEST_F(SafeStart, CountsStartsInARow)
{
    CPluginDriver plugin(B);
    s_notes.clear();
    plugin->SetHook(PluginCall::Initialize, TakeNotes, nullptr);
    const auto start = [&](const WCHAR* szEndedIn) {
        EndedIn(szEndedIn, 1);
        Load();
        EXPECT_TRUE(Initialize());
        EXPECT_EQ(Note(IN_PLUGIN), "(none)");
        SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 0); // the machine restarts
    };
    start(B);
    start(A);
    EXPECT_EQ(s_notes, (Lines{"\"test_plugin_b.dll\"2", "\"test_plugin_b.dll\"1"}));
    plugin->SetFailure(PluginCall::Initialize, StandinFailure::ReadNull, 0);
    Load();
    EXPECT_FALSE(Initialize());
    EXPECT_EQ(Note(IN_PLUGIN), "\"test_plugin_b.dll\"") << "Winlogon does not go on without its GINA";
}

TEST_F(SafeStart, LaterSessionsMakeNoNotes)
{
    SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 1);
    SetString(LEFT_OUT_KEY, A, TEXT(""));
    EndedIn(B, 7);
    Load();
    EXPECT_EQ(Chain(), ALL);
    EXPECT_EQ(Note(IN_PLUGIN), "\"test_plugin_b.dll\"");
}

TEST_F(SafeStart, OffChangesNothing)
{
    const auto live = [&] {
        Load();
        EXPECT_TRUE(Initialize());
        SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 0);
        return Log();
    };
    live(); // makes the values that a new machine lacks
    const Lines on = live();
    HKEY hKey = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, START_KEY, 0, KEY_READ, &hKey), ERROR_SUCCESS);
    RegCloseKey(hKey);
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, START_KEY);
    SetDword(OWN_KEY, SAFE_START, 0);
    EXPECT_EQ(live(), on) << "only what is left out is told";
    EXPECT_NE(RegOpenKeyExW(HKEY_LOCAL_MACHINE, START_KEY, 0, KEY_READ, &hKey), ERROR_SUCCESS);
}

} // namespace
