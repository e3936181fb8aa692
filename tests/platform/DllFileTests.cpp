#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "platform/DllFile.h"

namespace {

using State = CDllFile::State;

// Tests run in a folder of their own beside the one of programs and DLLs.
constexpr WCHAR BUILD_FOLDER[] = TEXT("../../../bin");
constexpr char SAMPLE[] = "../../../bin/loader_test_inner.dll";

std::string ReadSample()
{
    std::ifstream file(SAMPLE, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(file)), {});
}

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
        {TEXT("loader_test_inner.dll"), BUILD_FOLDER, State::Usable},
        {TEXT("Loader_Test_INNER"), BUILD_FOLDER, State::Usable},
        {TEXT("../../../bin/loader_test_inner.dll"), TEXT("."), State::Usable},
        {TEXT("loader_test_inner.dll"), TEXT("."), State::Missing},
        {TEXT("loader_test_inner."), BUILD_FOLDER, State::Missing},
        {TEXT(""), BUILD_FOLDER, State::Missing},
        {TEXT("no_such_dll.dll"), nullptr, State::Missing},
    };
    for (const auto& row : rows) {
        const CDllFile file = InspectDll(row.szName, row.szDirectory);
        EXPECT_EQ(row.state, file.state);
        EXPECT_EQ(row.state == State::Missing, file.path.empty());
    }
}

TEST(DllFile, ExportsWhatTheLoaderFinds)
{
    const CDllFile file = InspectDll(TEXT("loader_test_inner.dll"), BUILD_FOLDER);
    ASSERT_FALSE(file.exports.empty());
    const HMODULE hModule = LoadLibraryW(TEXT("loader_test_inner.dll"));
    ASSERT_NE(nullptr, hModule);
    for (const std::string& name : file.exports) {
        EXPECT_TRUE(file.HasExport(name));
        EXPECT_NE(nullptr, GetProcAddress(hModule, name.c_str())) << name;
    }
    FreeLibrary(hModule);
    EXPECT_FALSE(file.HasExport("NoSuchExport"));
}

TEST(DllFile, DamageIsNoDllAndNoCrash)
{
    const std::string sample = ReadSample();
    ASSERT_GT(sample.size(), 4096u);
    EXPECT_EQ(State::Unusable, InspectBytes("").state);
    EXPECT_EQ(State::Unusable, InspectBytes("MZ").state);
    for (std::size_t cb = 1; cb < 1024; cb += 61) {
        EXPECT_EQ(State::Unusable, InspectBytes(sample.substr(0, cb)).state) << cb;
    }
    // Whatever the headers say, nothing outside the file is read.
    for (std::size_t nByte = 0; nByte < 1024; nByte += 7) {
        std::string damaged = sample;
        damaged[nByte] = static_cast<char>(~damaged[nByte]);
        EXPECT_NE(State::Missing, InspectBytes(damaged).state);
    }
}

TEST(DllFile, AFolderIsNotReadAsOne)
{
    CreateDirectoryW(TEXT("folder.dll"), nullptr);
    EXPECT_NE(State::Usable, InspectDll(TEXT("folder.dll"), TEXT(".")).state);
}

} // namespace
