#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include "TestKey.h"
#include "dlls/LoaderTestDll.h"

namespace {

using WideText = std::basic_string<WCHAR>;

constexpr WCHAR OUTER[] = TEXT("loader_test_outer");
constexpr WCHAR INNER[] = TEXT("loader_test_inner");

/// The key through which a test and one of its DLLs talk.
class CDllKey
{
public:
    explicit CDllKey(const WCHAR* szDll)
    {
        const WideText key = WideText(LOADER_TEST_KEY TEXT("\\")) + szDll;
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &m_hKey,
                        nullptr);
    }
    ~CDllKey() { RegCloseKey(m_hKey); }
    CDllKey(const CDllKey&) = delete;
    CDllKey& operator=(const CDllKey&) = delete;

    void SetBehaviour(DWORD dwBehaviour)
    {
        RegSetValueExW(m_hKey, TEXT("Behaviour"), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&dwBehaviour),
                       sizeof(dwBehaviour));
    }
    void LetLoad(const WideText& name)
    {
        RegSetValueExW(m_hKey, TEXT("Load"), 0, REG_SZ, reinterpret_cast<const BYTE*>(name.c_str()),
                       static_cast<DWORD>((name.size() + 1) * sizeof(WCHAR)));
    }
    DWORD Get(const WCHAR* szValue) const
    {
        DWORD dwNumber = 0;
        DWORD cbNumber = sizeof(dwNumber);
        RegQueryValueExW(m_hKey, szValue, nullptr, nullptr, reinterpret_cast<BYTE*>(&dwNumber), &cbNumber);
        return dwNumber;
    }

private:
    HKEY m_hKey = nullptr;
};

class Library : public testing::Test
{
protected:
    Library() : m_key(LOADER_TEST_KEY), m_outer(OUTER), m_inner(INNER) {}

    CTestKey m_key;
    CDllKey m_outer;
    CDllKey m_inner;
};

TEST_F(Library, CountsReferencesAndCallsDllMainAtTheEnds)
{
    const HMODULE hModule = LoadLibraryW(TEXT("loader_test_outer.dll"));
    ASSERT_NE(hModule, nullptr);
    EXPECT_EQ(LoadLibraryW(TEXT("LOADER_TEST_OUTER")), hModule) << "neither case nor extension matters";
    EXPECT_EQ(m_outer.Get(TEXT("Attached")), 1u);
    const auto pfnGetOwnInstance = reinterpret_cast<GetOwnInstanceFunction>(
        reinterpret_cast<void*>(GetProcAddress(hModule, "GetOwnInstance")));
    ASSERT_NE(pfnGetOwnInstance, nullptr);
    EXPECT_EQ(pfnGetOwnInstance(), hModule);
    EXPECT_TRUE(FreeLibrary(hModule));
    EXPECT_EQ(m_outer.Get(TEXT("Detached")), 0u);
    EXPECT_TRUE(FreeLibrary(hModule));
    EXPECT_EQ(m_outer.Get(TEXT("Detached")), 1u);
    EXPECT_FALSE(FreeLibrary(hModule));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_MOD_NOT_FOUND));
    EXPECT_FALSE(FreeLibrary(nullptr));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
    EXPECT_EQ(GetProcAddress(hModule, "GetOwnInstance"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_MOD_NOT_FOUND));
}

TEST_F(Library, FindsOnlyWhatTheDllItselfExports)
{
    const HMODULE hModule = LoadLibraryW(OUTER);
    ASSERT_NE(hModule, nullptr);
    for (const char* szName : {"NoSuchExport", "getowninstance", "RegOpenKeyExW", "malloc"}) {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(GetProcAddress(hModule, szName), nullptr) << szName;
        EXPECT_EQ(GetLastError(), DWORD(ERROR_PROC_NOT_FOUND)) << szName;
    }
    FreeLibrary(hModule);
    EXPECT_EQ(GetProcAddress(nullptr, "GetOwnInstance"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_PROC_NOT_FOUND));
}

TEST_F(Library, TellsWhyADllCannotBeLoaded)
{
    std::ofstream("garbage.dll") << "this is no library, however long it may be\n";
    std::ofstream("empty.dll").flush();
    const struct
    {
        const WCHAR* szFile;
        DWORD dwBehaviour;
        DWORD dwError;
    } rows[] = {
        {TEXT("no_such_library.dll"), LOADER_TEST_ACCEPT, ERROR_MOD_NOT_FOUND},
        {TEXT("no\\such\\library.dll"), LOADER_TEST_ACCEPT, ERROR_MOD_NOT_FOUND},
        {TEXT(".\\loader_test_outer."), LOADER_TEST_ACCEPT, ERROR_MOD_NOT_FOUND},
        {TEXT("garbage.dll"), LOADER_TEST_ACCEPT, ERROR_BAD_EXE_FORMAT},
        {TEXT(".\\garbage"), LOADER_TEST_ACCEPT, ERROR_BAD_EXE_FORMAT},
        {TEXT("empty.dll"), LOADER_TEST_ACCEPT, ERROR_BAD_EXE_FORMAT},
        {TEXT("."), LOADER_TEST_ACCEPT, ERROR_ACCESS_DENIED},
        {TEXT(""), LOADER_TEST_ACCEPT, ERROR_MOD_NOT_FOUND},
        {nullptr, LOADER_TEST_ACCEPT, ERROR_INVALID_PARAMETER},
        {TEXT("loader_test_outer.dll"), LOADER_TEST_REFUSE, ERROR_DLL_INIT_FAILED},
        {TEXT("loader_test_outer.dll"), LOADER_TEST_FAULT, ERROR_NOACCESS},
    };
    for (const auto& row : rows) {
        m_outer.SetBehaviour(row.dwBehaviour);
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(LoadLibraryW(row.szFile), nullptr);
        EXPECT_EQ(GetLastError(), row.dwError) << (&row - rows);
    }
    EXPECT_EQ(m_outer.Get(TEXT("Detached")), 2u) << "a DLL that refused is told to go";
    m_outer.SetBehaviour(LOADER_TEST_ACCEPT);
    const HMODULE hModule = LoadLibraryW(OUTER);
    EXPECT_NE(hModule, nullptr) << "a DLL that refused once may come another time";
    EXPECT_EQ(m_outer.Get(TEXT("Attached")), 3u);
    FreeLibrary(hModule);
    std::remove("garbage.dll");
    std::remove("empty.dll");
}

TEST_F(Library, LetsADllLoadAnotherWhileItAttaches)
{
    m_outer.LetLoad(INNER);
    m_inner.LetLoad(OUTER);
    const HMODULE hOuter = LoadLibraryW(OUTER);
    ASSERT_NE(hOuter, nullptr);
    EXPECT_EQ(m_outer.Get(TEXT("Loaded")), 1u);
    EXPECT_EQ(m_inner.Get(TEXT("Loaded")), 1u) << "the outer DLL, which is still attaching";
    EXPECT_EQ(m_outer.Get(TEXT("Attached")), 1u);
    EXPECT_EQ(m_inner.Get(TEXT("Attached")), 1u);
    const HMODULE hInner = LoadLibraryW(INNER);
    for (const HMODULE hModule : {hInner, hInner, hOuter, hOuter}) {
        EXPECT_TRUE(FreeLibrary(hModule));
    }
    EXPECT_EQ(m_outer.Get(TEXT("Detached")), 1u);
    EXPECT_EQ(m_inner.Get(TEXT("Detached")), 1u);
}

TEST_F(Library, NamesItsFile)
{
    const HMODULE hModule = LoadLibraryW(OUTER);
    WCHAR szFile[MAX_PATH];
    const DWORD cchFile = GetModuleFileNameW(hModule, szFile, MAX_PATH);
    const WideText file(szFile);
    EXPECT_EQ(file.size(), cchFile);
    EXPECT_EQ(file.substr(file.find_last_of(TEXT("\\/")) + 1), TEXT("loader_test_outer.dll"));

    const HMODULE hAgain = LoadLibraryW(szFile);
    EXPECT_EQ(hAgain, hModule) << "by its full path";
    FreeLibrary(hAgain);
    EXPECT_EQ(GetModuleHandleW(TEXT("LOADER_TEST_OUTER")), hModule);

    EXPECT_EQ(GetModuleFileNameW(hModule, szFile, 5), 5u);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(WideText(szFile), file) << "no terminator is put into what fits";
    FreeLibrary(hModule);
    EXPECT_EQ(GetModuleHandleW(OUTER), nullptr);

    const WideText program(szFile, GetModuleFileNameW(nullptr, szFile, MAX_PATH));
    EXPECT_NE(program.find(TEXT("platform_tests")), WideText::npos);
}

TEST_F(Library, TakesADotAtTheEndForNoExtension)
{
    const HMODULE hModule = LoadLibraryW(OUTER);
    WCHAR szFile[MAX_PATH];
    GetModuleFileNameW(hModule, szFile, MAX_PATH);
    FreeLibrary(hModule);
    std::filesystem::copy_file(szFile, "no_extension", std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(LoadLibraryW(TEXT(".\\no_extension")), nullptr);
    const HMODULE hCopy = LoadLibraryW(TEXT(".\\no_extension."));
    EXPECT_NE(hCopy, nullptr);
    FreeLibrary(hCopy);
    std::remove("no_extension");
}

} // namespace
