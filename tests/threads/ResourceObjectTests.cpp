#include "ResourceObject.h"
#include "TestMachine.h"
#ifndef _WIN32
#include "platform/FaultInjection.h"
#endif

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
        EXPECT_EQ(Lines{row.line}, Log());
    }
#ifndef _WIN32
    struct
    {
        PlatformCall call;
        Lines log;
    } const failures[] = {
        {PlatformCall::FindResourceW, {std::string(NOT_FOUND) + "1, Error: 0x8"}},
        {PlatformCall::LoadResource,
         {"[EXCEPTION] LoadResource function call failed, Error: 0x8", UNHANDLED}},
        {PlatformCall::LockResource,
         {"[EXCEPTION] LockResource function call failed, Error: 0x8", UNHANDLED}},
        {PlatformCall::VerQueryValueW, {}},
    };
    for (const auto& row : failures) {
        CResourceObject resources = Open(TEXT("version_test_dll.dll"));
        const CFaultInjection fault(row.call, 1, ERROR_NOT_ENOUGH_MEMORY);
        VS_FIXEDFILEINFO* pInfo = nullptr;
        EXPECT_FALSE(resources.LoadMenu(1, &pInfo));
        EXPECT_EQ(nullptr, pInfo);
        EXPECT_EQ(row.log, Log());
    }
#endif
}

} // namespace
