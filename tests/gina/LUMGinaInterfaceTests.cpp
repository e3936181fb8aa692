#include "TestMachine.h"
#include "WlxInterface.h"

namespace {

class LUMGinaInterface : public CTestMachine
{
};

TEST_F(LUMGinaInterface, AFaultOfTheHostCostsTheCallItsDefaultResultAndNoMore)
{
    const HMODULE hGina = LoadLibraryW(TEXT("lum_gina.dll"));
    ASSERT_NE(nullptr, hGina);
    const auto pfnNegotiate = reinterpret_cast<BOOL(WINAPI*)(DWORD, DWORD*)>(
        reinterpret_cast<void*>(GetProcAddress(hGina, "WlxNegotiate")));
    ASSERT_NE(nullptr, pfnNegotiate);

    // The host writes through Winlogon's pointer without looking at it.
    const auto pdwNowhere = reinterpret_cast<DWORD*>(0x40);
    EXPECT_EQ(FALSE, pfnNegotiate(WLX_VERSION_1_4, pdwNowhere));
    EXPECT_EQ(1, Count("[WARNING] An unhandled exception occurred"));

    DWORD dwVersion = 0;
    EXPECT_EQ(TRUE, pfnNegotiate(WLX_VERSION_1_4, &dwVersion));
    EXPECT_EQ(WLX_VERSION_1_4, dwVersion);
    EXPECT_TRUE(FreeLibrary(hGina));
}

} // namespace
