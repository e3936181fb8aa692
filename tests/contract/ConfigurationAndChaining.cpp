#include "Contract.h"
#include "LUMRegistry.h"
#include "Messages.h"
#include "WinlogonRegistry.h"
#include "chaining/RegistryManager.h"

namespace {

TEST_F(Contract, Configuration)
{
    CLUMRegistry registry(TAG, KEY);
    EXPECT_TRUE(registry.m_pPlugins != nullptr && registry.m_pGinaDLL && registry.m_pEnabled);
    EXPECT_TRUE(registry.m_pPipeInterval == nullptr && !registry.m_pRegistryMonitorInterval);
    EXPECT_TRUE(registry.AddPlugin(TEXT("a.dll")) && registry.AddPlugin(TEXT("b.dll")));
    EXPECT_EQ(2u, registry.m_dwNumPlugins);
    EXPECT_EQ("b.dll", Narrow(registry.m_szPlugins[1]));
    WCHAR szPlugin[260];
    EXPECT_TRUE(registry.GetPlugin(szPlugin, 260, 0) && !registry.GetPlugin(szPlugin, 260, 2));
    EXPECT_TRUE(registry.IsPluginListed(TEXT("A.DLL")) && registry.RemovePlugin(TEXT("a.dll")));
    EXPECT_TRUE(registry.ParsePlugins() && registry.GetNumPlugins(true) == 1);
    DWORD dwValue = 1;
    EXPECT_TRUE(registry.GetTimeout(&dwValue, true) && dwValue == 0);
    EXPECT_THROW(registry.GetPipeInterval(&dwValue, true), CUnableToReadRegistryException);
    EXPECT_THROW(registry.GetRegistryMonitorInterval(&dwValue, true), CUnableToReadRegistryException);
    EXPECT_TRUE(registry.SetEnabled(1) && registry.IncreaseInstanceCount());
    EXPECT_TRUE(registry.GetInstanceCount(&dwValue, true) && dwValue == 1);
    EXPECT_TRUE(registry.GetGinaDLL(szPlugin, 260, true) && *szPlugin == 0);
}

TEST_F(Contract, Chaining)
{
    const CGinaChainingObject link(TAG, KEY, TEXT("x.dll"));
    EXPECT_TRUE(CGinaChainingObject(TAG, KEY, &link) == link && link == TEXT("X.DLL"));
    EXPECT_EQ("x.dll", Narrow(link.m_szGinaDLL));
    CGinaChainingInfoObject known(TAG, KEY, TEXT("x.dll"), TEXT("SOFTWARE\\ORX\\LUM\\Gina"), TEXT("Next"),
                                  nullptr, false, false, true, false);
    EXPECT_EQ("Next", Narrow(known.m_szOldGinaDLLKey));
    EXPECT_TRUE(known.m_szDefaultGinaDLL == nullptr && known.m_pOldGinaDLL == nullptr &&
                known.m_bMustBeFirst);
    WCHAR szGinaDLL[260];
    EXPECT_FALSE(known.GetOldGinaDLL(szGinaDLL, 260));
    known.SetOldGinaDLL(TEXT("msgina.dll"));
    EXPECT_TRUE(known.GetOldGinaDLL(szGinaDLL, 260) && known == TEXT("x.dll"));
    const CGinaChainingInfoObject record(TAG, KEY, TEXT("y.dll"), TEXT("null,null,null,1,1,0,1"));
    EXPECT_TRUE(record.m_bTerminator && record.m_bStandalone && record.m_bIsIncompatible);
    EXPECT_TRUE(*record.m_szSubKey == 0 && *record.m_szDefaultGinaDLL == 0);
    EXPECT_THROW(CGinaChainingInfoObject(TAG, KEY, TEXT("y.dll"), TEXT("1,2")), CBadArgException);

    CLUMRegistry registry(TAG, KEY);
    CWinlogonRegistry winlogon(TAG, KEY);
    winlogon.SetGinaDLL(TEXT("msgina.dll"));
    CRegistryManager manager(TAG, KEY, &registry, &winlogon, false);
    EXPECT_TRUE(manager.m_pKnownGinaList->m_dwCount == 9 && !manager.m_bChainIncomplete);
    EXPECT_TRUE(manager.m_pWinlogonRegistry == &winlogon && manager.m_pLUMRegistry == &registry);
    EXPECT_TRUE(manager.InsertGinaIntoChainingList(TEXT("lum_gina.dll"), nullptr, true));
    EXPECT_TRUE(manager.IsGinaInChainingList(TEXT("lum_gina.dll")) &&
                manager.IsGinaKnown(TEXT("wpnGina.dll")));
    EXPECT_EQ("lum_gina.dll", Narrow(manager.m_pGinaChainingList->m_pHead->m_pItem->m_szGinaDLL));
    CRegistryManager fresh(TAG, KEY, &registry, &winlogon, true);
    EXPECT_TRUE(manager == fresh && !(manager != fresh));
    manager.ResyncWithRegistry(fresh);
    manager.WriteOutListToRegistry();
    EXPECT_TRUE(manager.RemoveGinaFromChainingList(TEXT("lum_gina.dll")));
    EXPECT_EQ(0u, manager.m_pGinaChainingList->m_dwCount);
}

} // namespace
