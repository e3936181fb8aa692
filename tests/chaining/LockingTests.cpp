#include <thread>

#include "ChainMachine.h"

namespace {

class Locking : public CChainMachine
{
protected:
    Locking() { SetTraceMask(0); }
};

TEST_F(Locking, ManagersThatMeetEachOtherFromBothSidesGoOn)
{
    SetValues(ValuesOf("lum_gina.dll msgina.dll"));
    const auto left = Build();
    SetValues(ValuesOf("lum_gina.dll wpnGina.dll msgina.dll"));
    const auto right = Build();
    const auto meet = [](CRegistryManager& own, const CRegistryManager& other) {
        for (int n = 0; n < 200; ++n) {
            if (own != other) {
                own.ResyncWithRegistry(other);
            }
            own.InsertGinaIntoChainingList(TEXT("wpnGina.dll"), nullptr, false);
            own.RemoveGinaFromChainingList(TEXT("wpnGina.dll"));
        }
    };
    std::thread thread([&] { meet(*left, *right); });
    meet(*right, *left);
    thread.join();
    EXPECT_TRUE(left->IsGinaInChainingList(TEXT("lum_gina.dll")));
    // Torn names would show in the registry.
    EXPECT_EQ("lum_gina.dll", GetValues()["Winlogon"]);
}

TEST_F(Locking, AMonitorMayHoldTheLockWhileItReads)
{
    SetValues(ValuesOf("lum_gina.dll msgina.dll"));
    const auto own = Build();
    const CCriticalSection::CLock lock(own->m_lock);
    const auto fresh = Build(true);
    EXPECT_TRUE(*own == *fresh);
    own->ResyncWithRegistry(*fresh);
    own->ResyncWithRegistry(*own);
    EXPECT_EQ("lum_gina.dll msgina.dll", ChainOf(*own));
}

} // namespace
