#include "ChainMachine.h"
#include "Exceptions.h"
#include "FailingAllocation.h"
#include "platform/FaultInjection.h"

namespace {

class FailingRegistry : public CChainMachine
{
};

TEST_F(FailingRegistry, WinlogonsValueCannotBeWritten)
{
    {
        const CFaultInjection fault(PlatformCall::RegSetValueExW, 1, ERROR_ACCESS_DENIED);
        EXPECT_TRUE(m_pWinlogon->SetGinaDLL(TEXT("lum_gina.dll")));
    }
    EXPECT_EQ((std::vector<std::string>{
                  "[EXCEPTION] Unable to write to registry, Registry Value: GinaDLL, Error: 0x5"}),
              Log());
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, WINLOGON_KEY);
    CWinlogonRegistry keyless(LUM_GINA_APP, LUM_GINA_MTM);
    ClearLog();
    {
        const CFaultInjection fault(PlatformCall::RegCreateKeyExW, 1, ERROR_ACCESS_DENIED);
        EXPECT_FALSE(keyless.SetGinaDLL(TEXT("lum_gina.dll")));
    }
    EXPECT_EQ(nullptr, keyless.m_pGinaDLL);
    EXPECT_EQ(1,
              Count("[EXCEPTION] Unable to write to registry, Registry Value: GinaDLL, Error: 0xffffffff"));
    EXPECT_EQ(1, Count("[WARNING] The requested operation failed or it was cancelled"));
    EXPECT_TRUE(keyless.SetGinaDLL(TEXT("lum_gina.dll")));
}

TEST_F(FailingRegistry, WinlogonsValueCannotBeRead)
{
    SetValues(ValuesOf("lum_gina.dll msgina.dll"));
    const CFaultInjection fault(PlatformCall::RegQueryValueExW, 1, ERROR_ACCESS_DENIED, WINLOGON_GINA_DLL,
                                FaultRepeat::FromThenOn);
    EXPECT_EQ("", ChainOf(*Build()));
}

TEST_F(FailingRegistry, ARepairThatDoesNotHoldEndsTheBuilding)
{
    SetValues({{"Winlogon", "wpnGina.dll"}, {"wpnGina.dll", ""}});
    const CFaultInjection fault(PlatformCall::RegSetValueExW, 1, ERROR_ACCESS_DENIED, TEXT("OldGinaDLL"),
                                FaultRepeat::FromThenOn);
    EXPECT_EQ("wpnGina.dll...", ChainOf(*Build()));
    EXPECT_EQ(1u, fault.GetUses());
    EXPECT_EQ(1,
              Count("[WARNING] Gina chaining list is incomplete due to a passthrough value that could not be "
                    "fixed, GinaDLL: wpnGina.dll"));
}

TEST_F(FailingRegistry, AChainIsWrittenThroughTheKeysThatTheHostHasOpened)
{
    SetValues(ValuesOf("lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll"));
    const auto manager = Build();
    {
        // As for a client whose identity may open nothing.
        const CFaultInjection fault(PlatformCall::RegOpenKeyExW, 1, ERROR_ACCESS_DENIED, nullptr,
                                    FaultRepeat::FromThenOn);
        EXPECT_TRUE(manager->RemoveGinaFromChainingList(TEXT("wpnGina.dll")));
    }
    EXPECT_EQ("lum_gina.dll PLinkGina.dll msgina.dll", ChainOf(*Build(true)));
}

TEST_F(FailingRegistry, WhatCannotBeWrittenDoesNotStopTheRest)
{
    SetValues(ValuesOf("wpnGina.dll PLinkGina.dll msgina.dll"));
    const auto manager = Build();
    {
        const CFaultInjection fault(PlatformCall::RegSetValueExW, 1, ERROR_ACCESS_DENIED, WINLOGON_GINA_DLL);
        EXPECT_TRUE(manager->InsertGinaIntoChainingList(TEXT("kvs_gina.dll"), TEXT("PLinkGina.dll"), false));
    }
    EXPECT_EQ("wpnGina.dll kvs_gina.dll PLinkGina.dll msgina.dll", ChainOf(*Build(true)));
    ClearLog();
    SetValues(ValuesOf("msgina.dll"));
    const auto last = Build();
    {
        const CFaultInjection fault(PlatformCall::RegDeleteValueW, 1, ERROR_ACCESS_DENIED);
        EXPECT_TRUE(last->RemoveGinaFromChainingList(TEXT("msgina.dll")));
    }
    EXPECT_EQ(1, Count("[EXCEPTION] Unable to delete registry value, Registry Value: GinaDLL, Error: 0x5"));
}

TEST_F(FailingRegistry, NoOperationDependsOnMemory)
{
    SetTraceMask(0);
    SetRecord("rec.dll", "msgina.dll,0,0,0,0");
    for (int nBefore = 0;; ++nBefore) {
        SetValues(ValuesOf("rec.dll lum_gina.dll msgina.dll"));
        const auto own = Build();
        SetValues(ValuesOf("rec.dll wpnGina.dll lum_gina.dll msgina.dll"));
        bool bEnough = false;
        try {
            const CFailingAllocation noMemory(nBefore);
            // What there is no memory to read must not be taken for missing, and overwritten.
            Build(false);
            const auto fresh = Build(true);
            own->ResyncWithRegistry(*fresh);
            own->RemoveGinaFromChainingList(TEXT("rec.dll"));
            own->InsertGinaIntoChainingList(TEXT("PLinkGina.dll"), TEXT("msgina.dll"), false);
            bEnough = ChainOf(*own) == "wpnGina.dll lum_gina.dll PLinkGina.dll msgina.dll" && nBefore > 200;
        } catch (const CMessage&) {
        } catch (const std::bad_alloc&) {
        }
        // A chain of which a part got lost on the way is never written.
        const std::string chain = ChainOf(*Build(true));
        EXPECT_EQ("msgina.dll", chain.substr(chain.rfind(' ') + 1)) << nBefore;
        EXPECT_NE(std::string::npos, chain.find("lum_gina.dll")) << nBefore;
        if (bEnough) {
            break;
        }
    }
}

} // namespace
