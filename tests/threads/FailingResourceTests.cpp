#include "ResourceObject.h"
#include "TestMachine.h"
#include "platform/FaultInjection.h"

namespace {

class FailingResource : public CTestMachine
{
};

TEST_F(FailingResource, IsReported)
{
    struct
    {
        PlatformCall call;
        Lines log;
    } const rows[] = {
        {PlatformCall::FindResourceW, {"[EXCEPTION] Unable to find resource, Resource ID: 1, Error: 0x8"}},
        {PlatformCall::LoadResource,
         {"[EXCEPTION] LoadResource function call failed, Error: 0x8", UNHANDLED}},
        {PlatformCall::LockResource,
         {"[EXCEPTION] LockResource function call failed, Error: 0x8", UNHANDLED}},
        {PlatformCall::VerQueryValueW, {}},
    };
    const HMODULE hModule = LoadLibraryW(TEXT("version_test_dll.dll"));
    CResourceObject resources(LUM_GINA_APP, LUM_GINA_MTM, hModule, 0, 0);
    for (const auto& row : rows) {
        const CFaultInjection fault(row.call, 1, ERROR_NOT_ENOUGH_MEMORY);
        VS_FIXEDFILEINFO* pInfo = nullptr;
        EXPECT_FALSE(resources.LoadMenu(1, &pInfo));
        EXPECT_EQ(nullptr, pInfo);
        EXPECT_EQ(row.log, Log());
        ClearLog();
    }
    FreeLibrary(hModule);
}

} // namespace
