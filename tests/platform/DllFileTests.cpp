#include <cstring>
#include <fstream>

#include "TestMachine.h"
#include "machine/DllFile.h"

namespace {

using State = CDllFile::State;

// Tests run in a folder of their own beside the one of programs and DLLs.
constexpr WCHAR BUILD_FOLDER[] = TEXT("../../../bin");
constexpr char SAMPLE[] = "../../../bin/pass_plugin.dll";

CDllFile InspectBytes(const std::string& bytes)
{
    std::ofstream("damaged.dll", std::ios::binary) << bytes;
    return InspectDll(TEXT("damaged.dll"), TEXT("."));
}

TEST(DllFile, IsFoundByName)
{
    const struct
    {
        const WCHAR* szName;
        const WCHAR* szDirectory;
        State state;
    } rows[] = {
        {TEXT("pass_plugin.dll"), BUILD_FOLDER, State::Usable},
        {TEXT("Pass_PLUGIN"), BUILD_FOLDER, State::Usable},
        {TEXT("../../../bin/pass_plugin.dll"), TEXT("."), State::Usable},
        {TEXT("pass_plugin "), BUILD_FOLDER, State::Usable},
        {TEXT("pass_plugin.dll. "), BUILD_FOLDER, State::Usable},
        {TEXT("pass_plugin.dll"), TEXT("."), State::Missing},
        {TEXT("pass_plugin."), BUILD_FOLDER, State::Missing},
        {TEXT(""), BUILD_FOLDER, State::Missing},
        {TEXT(" "), BUILD_FOLDER, State::Missing},
        {TEXT("no_such_dll.dll"), nullptr, State::Missing},
    };
    for (const auto& row : rows) {
        const CDllFile file = InspectDll(row.szName, row.szDirectory);
        EXPECT_EQ(row.state, file.state);
        EXPECT_EQ(row.state == State::Missing, file.path.empty());
        EXPECT_EQ(row.state == State::Usable, file.HasExport("LUMNegotiate"));
    }
    EXPECT_NE(State::Usable, InspectDll(TEXT("../../../bin."), nullptr).state) << "a folder";
}

/// A 32-bit Windows DLL with one section, in which it exports one name and imports from one DLL.
std::string MakePeFile(const std::string& name, const std::string& import = "kernel32.dll")
{
    std::string bytes(0x400, '\0');
    const auto put = [&](std::size_t nOffset, DWORD dwValue) { std::memcpy(&bytes[nOffset], &dwValue, 4); };
    put(0x0, 0x5A4D);        // "MZ"
    put(0x3C, 0x40);         // where the headers are
    put(0x40, 0x4550);       // "PE"
    put(0x44, 0x0001014C);   // i386, one section
    put(0x54, 0x210200E0);   // the size of the optional header; a DLL
    put(0x58, 0x10B);        // 32 bits
    put(0x58 + 92, 16);      // data directories
    put(0x58 + 96, 0x1000);  // that of the exports
    put(0x58 + 104, 0x1100); // and that of the imports
    put(0x300 + 12, 0x1150);
    bytes.replace(0x350, import.size(), import);
    put(0x138 + 12, 0x1000); // where the section is loaded,
    put(0x138 + 16, 0x200);  // its size,
    put(0x138 + 20, 0x200);  // and where it lies
    put(0x200 + 24, 1);      // names
    put(0x200 + 32, 0x1040);
    put(0x240, 0x1050);
    bytes.replace(0x250, name.size(), name);
    return bytes;
}

TEST(DllFile, OfWindowsIsReadOnBothTargets)
{
    const CDllFile file = InspectBytes(MakePeFile("WlxNegotiate"));
    EXPECT_EQ(State::Usable, file.state);
    EXPECT_EQ(std::vector<std::string>{"WlxNegotiate"}, file.exports);
    std::string elsewhere = MakePeFile("WlxNegotiate");
    elsewhere[0x44] = 0x64;
    EXPECT_EQ(State::Unusable, InspectBytes(elsewhere).state) << "of another processor";
    // One that was copied in part, wherever it ends.
    const std::string whole = MakePeFile("WlxNegotiate");
    for (std::size_t cb = 0; cb < whole.size(); cb += 0x1F) {
        EXPECT_EQ(State::Unusable, InspectBytes(whole.substr(0, cb)).state) << cb;
    }
    const CDllFile orphan = InspectBytes(MakePeFile("WlxNegotiate", "no_such_dll.dll"));
#ifdef _WIN32
    EXPECT_EQ(State::Unusable, orphan.state);
    EXPECT_EQ("no_such_dll.dll", orphan.missingImport);
#else
    EXPECT_EQ(State::Usable, orphan.state);
#endif
}

#ifdef _WIN32
using DllFileAtRestart = CTestMachine;

TEST_F(DllFileAtRestart, IsGoneOrReplaced)
{
    constexpr WCHAR KEY[] = TEXT("SYSTEM\\CurrentControlSet\\Control\\Session Manager");
    constexpr WCHAR LIST[] = TEXT("PendingFileRenameOperations");
    InspectBytes(MakePeFile("WlxNegotiate"));
    std::ofstream("newer.dll", std::ios::binary) << MakePeFile("Newer");
    ASSERT_TRUE(MoveFileExW(TEXT("damaged.dll"), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT));
    EXPECT_EQ(State::Leaving, InspectDll(TEXT("Damaged"), TEXT(".")).state);
    EXPECT_EQ(State::Usable, InspectDll(TEXT("newer"), TEXT(".")).state);
    ASSERT_TRUE(MoveFileExW(TEXT("newer.dll"), TEXT("damaged.dll"),
                            MOVEFILE_DELAY_UNTIL_REBOOT | MOVEFILE_REPLACE_EXISTING));
    EXPECT_TRUE(InspectDll(TEXT("damaged"), TEXT(".")).HasExport("Newer"));
    EXPECT_EQ(State::Leaving, InspectDll(TEXT("newer"), TEXT(".")).state);
    DeleteValue(KEY, LIST);
}
#endif

TEST(DllFile, DamageIsNoDllAndNoCrash)
{
    const std::string sample = ReadBytes(SAMPLE);
    ASSERT_GT(sample.size(), 4096u);
    EXPECT_EQ(State::Unusable, InspectBytes("").state);
    EXPECT_EQ(State::Unusable, InspectBytes("MZ").state);
    for (std::size_t cb = 1; cb < 1024; cb += 151) {
        EXPECT_EQ(State::Unusable, InspectBytes(sample.substr(0, cb)).state) << cb;
    }
    // Whatever the headers say, nothing outside the file is read.
    for (std::size_t nByte = 0; nByte < 1024; nByte += 29) {
        std::string damaged = sample;
        damaged[nByte] = static_cast<char>(~damaged[nByte]);
        EXPECT_NE(State::Missing, InspectBytes(damaged).state);
    }
}

} // namespace
