#include "Exceptions.h"
#include "ResourceObject.h"
#include "TestMachine.h"

namespace {

constexpr const char* NOT_FOUND = "[EXCEPTION] Unable to find resource, Resource ID: ";

/// A loaded DLL, and an object over it.
class ResourceObject : public CTestMachine
{
protected:
    ~ResourceObject() override
    {
        if (m_hModule != nullptr) {
            FreeLibrary(m_hModule);
        }
    }

    CResourceObject Open(const WCHAR* szDLL)
    {
        if (m_hModule != nullptr) {
            FreeLibrary(m_hModule);
        }
        m_hModule = LoadLibraryW(szDLL);
        ClearLog();
        return {LUM_GINA_APP, LUM_GINA_MTM, m_hModule, 0, 0};
    }

    HMODULE m_hModule = nullptr;
};

TEST_F(ResourceObject, ReadsTheVersionThatTheBuildGaveADLL)
{
    struct
    {
        const WCHAR* szDLL;
        DWORD dwHigh;
        DWORD dwLow;
    } const rows[] = {
        {TEXT("lum_gina.dll"), LUM_VERSION_MAJOR << 16 | LUM_VERSION_MINOR,
         LUM_VERSION_PATCH << 16 | LUM_VERSION_TWEAK},
        {TEXT("version_test_dll.dll"), 0x00020005, 0x000A0003},
    };
    for (const auto& row : rows) {
        VS_FIXEDFILEINFO* pInfo = nullptr;
        {
            CResourceObject resources = Open(row.szDLL);
            EXPECT_NE(nullptr, resources.GetVersionResource(1));
            ASSERT_TRUE(resources.LoadMenu(1, &pInfo));
        }
        // It belongs to the module, which stays.
        EXPECT_EQ(VS_FFI_SIGNATURE, pInfo->dwSignature);
        EXPECT_EQ(row.dwHigh, pInfo->dwFileVersionMS);
        EXPECT_EQ(row.dwLow, pInfo->dwFileVersionLS);
        EXPECT_EQ(row.dwHigh, pInfo->dwProductVersionMS);
        EXPECT_EQ(row.dwLow, pInfo->dwProductVersionLS);
        EXPECT_TRUE(Log().empty());
    }
}

TEST_F(ResourceObject, SaysWhichResourceThereIsNot)
{
    struct
    {
        const WCHAR* szDLL;
        WORD wResource;
        std::string line;
    } const rows[] = {
        {TEXT("msgina.dll"), 1, std::string(NOT_FOUND) + "1, Error: 0x714"},
        {TEXT("version_test_dll.dll"), 2, std::string(NOT_FOUND) + "2, Error: 0x716"},
    };
    for (const auto& row : rows) {
        CResourceObject resources = Open(row.szDLL);
        VS_FIXEDFILEINFO* pInfo = nullptr;
        EXPECT_FALSE(resources.LoadMenu(row.wResource, &pInfo));
        EXPECT_EQ(nullptr, pInfo);
        EXPECT_EQ((std::vector<std::string>{row.line}), Log());
    }
}

} // namespace
