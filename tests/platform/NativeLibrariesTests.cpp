#include "platform/NativeLibraries.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using WideText = std::basic_string<WCHAR>;

fs::path GetBinaryFolder()
{
    return fs::read_symlink("/proc/self/exe").parent_path();
}

/// The folder that a DLL was loaded from.
fs::path GetFolder(HMODULE hModule)
{
    WCHAR szFile[MAX_PATH];
    return fs::path(WideText(szFile, GetModuleFileNameW(hModule, szFile, MAX_PATH))).parent_path();
}

class NativeLibraries_ : public testing::Test
{
protected:
    NativeLibraries_()
    {
        for (const char* szName : {"System/searched.dll", "searched.dll"}) {
            fs::create_directories("System");
            fs::copy_file(GetBinaryFolder() / "loader_test_outer.dll", szName,
                          fs::copy_options::overwrite_existing);
        }
    }
    ~NativeLibraries_() override
    {
        NativeLibraries::SetSystemDirectory(nullptr);
        fs::remove_all("System");
        fs::remove("searched.dll");
    }
};

TEST_F(NativeLibraries_, AreSearchedInOrder)
{
    const struct
    {
        const WCHAR* szFile;
        const WCHAR* szSystem;
        fs::path expected;
    } rows[] = {
        {TEXT("Searched"), nullptr, fs::current_path()},
        {TEXT("Searched"), TEXT(".\\System"), fs::current_path() / "System"},
        {TEXT("System\\searched"), nullptr, fs::current_path() / "System"},
        {TEXT("loader_test_outer"), TEXT("System"), GetBinaryFolder()},
    };
    for (const auto& row : rows) {
        NativeLibraries::SetSystemDirectory(row.szSystem);
        const HMODULE hModule = LoadLibraryW(row.szFile);
        ASSERT_NE(hModule, nullptr);
        EXPECT_EQ(GetFolder(hModule), row.expected);
        EXPECT_TRUE(FreeLibrary(hModule));
    }
}

TEST_F(NativeLibraries_, ThatAreLoadedAreFoundByName)
{
    const HMODULE hModule = LoadLibraryW(TEXT("System\\searched.dll"));
    EXPECT_EQ(LoadLibraryW(TEXT("SEARCHED.DLL")), hModule) << "not the one in the current directory";
    EXPECT_TRUE(FreeLibrary(hModule));
    EXPECT_TRUE(FreeLibrary(hModule));
}

} // namespace
