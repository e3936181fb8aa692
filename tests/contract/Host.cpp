#include "Contract.h"
#include "LUMGina.h"
#include "Messages.h"

namespace {

TEST_F(Contract, Host)
{
    EXPECT_THROW(CLUMGina(nullptr), CLUMInitializeFailException);
    SetString(KEY, TEXT("GinaDLL"), TEXT("standin_gina.dll"));
    SetDword(TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Volatile"), TEXT("InstanceCount"), 1);
    const HINSTANCE hInstance = reinterpret_cast<HINSTANCE>(1);
    CLUMGina host(hInstance);
    EXPECT_TRUE(host.m_pGinaContext->m_hInstance == hInstance && host.m_dwNegotiatedWlxVersion == 0);
    EXPECT_THROW(host.LUMWlxLogoff(nullptr), CNoGINAorPluginToCallException);
    DWORD dwVersion = 0;
    WLX_DISPATCH_VERSION_1_4 table = {};
    PVOID pContext = nullptr;
    ASSERT_TRUE(host.LUMWlxNegotiate(0x00010004, &dwVersion));
    EXPECT_TRUE(host.m_dwNegotiatedWlxVersion == dwVersion && host.m_pGinaObjectList->m_dwCount == 1);
    ASSERT_TRUE(host.LUMWlxInitialize(nullptr, hInstance, nullptr, &table, &pContext));
    EXPECT_TRUE(host.m_pGinaContext->m_hWlx == hInstance &&
                host.m_pWinlogonObject->m_pWinlogonFunctions == &table);
    EXPECT_EQ("1", GetValue(TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Volatile"), TEXT("Enabled")));
    EXPECT_EQ(TRUE, host.LUMWlxIsLockOk(pContext));
    EXPECT_FALSE(host.m_pLUMPipeThreadObject->m_bRunning || host.m_pLUMRegMonitorThreadObject->m_bRunning)
        << "the first instance has the threads";
    EXPECT_TRUE(host.LUMAddPluginDynamic(TEXT("test_plugin_a.dll")));
    EXPECT_TRUE(*host.m_pGinaObjectList->m_pHead->m_pItem == TEXT("test_plugin_a.dll"));
    EXPECT_TRUE(host.LUMRemovePluginDynamic(TEXT("test_plugin_a.dll")));
    EXPECT_TRUE(host.LUMEnableActiveRegistryMonitoring(false));
    EXPECT_FALSE(host.LUMGetLUMGinaVersion(&dwVersion)) << "the handle is no module's";
    host.LUMWlxShutdown(pContext, 0);
    EXPECT_EQ("0", GetValue(TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Volatile"), TEXT("Enabled")));
}

} // namespace
