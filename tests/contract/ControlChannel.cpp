#include "Contract.h"
#include "LUMGina.h"
#include "LUMObject.h"
#include "LUMThreadObjects.h"
#include "Messages.h"

namespace {

TEST_F(Contract, ControlChannel)
{
    CLUMRegistry registry(TAG, KEY);
    CWinlogonRegistry winlogon(TAG, KEY);
    winlogon.SetGinaDLL(TEXT("msgina.dll"));
    CRegistryManager manager(TAG, KEY, &registry, &winlogon, false);
    CListEx<CGinaObject> list(TAG, KEY);
    CLUMObject object(TAG, KEY, &manager, &list, &registry);
    EXPECT_TRUE(object.m_pRegistryManager == &manager && object.m_pGinaObjectList == &list);
    EXPECT_TRUE(object.LUMEnableGina(true) && object.LUMIsGinaInChainingList(TEXT("lum_gina.dll")));
    EXPECT_TRUE(object.LUMRemoveGina(TEXT("lum_gina.dll")) && !object.LUMEnableGina(false));
    EXPECT_TRUE(object.LUMAddPlugin(TEXT("a.dll")) && object.LUMRemovePlugin(TEXT("a.dll")));
    CGinaPluginInfo info(TAG, KEY);
    info.SetGinaDLL(TEXT("a.dll"));
    EXPECT_FALSE(object.LUMIsGinaInPluginList(TEXT("a.dll")) || object.LUMIncreasePriority(info) ||
                 object.LUMDecreasePriority(info) || object.LUMQueryPlugin(&info, &info, 1, 2, 3) ||
                 object.LUMQueryPluginInfo(TEXT("a.dll"), info) || object.LUMGetPassthroughGina(info));

    CLUMGina host(reinterpret_cast<HINSTANCE>(1));
    CLUMPipeThreadObject* pPipe = host.m_pLUMPipeThreadObject;
    ASSERT_NE(nullptr, pPipe);
    EXPECT_TRUE(pPipe->m_pLUMGina == &host && pPipe->m_pLUMObject == host.m_pLUMObject);
    EXPECT_TRUE(pPipe->m_hPipe != INVALID_HANDLE_VALUE && pPipe->StartThread() && pPipe->StopThread());
    EXPECT_THROW(CLUMPipeThreadObject(&object, &host, nullptr, false), CBadArgException);
    CLUMRegMonitorThreadObject monitor(&manager, &registry, &winlogon, false);
    EXPECT_TRUE(monitor.m_pRegistryManager == &manager && monitor.m_pWinlogonRegistry == &winlogon);
    EXPECT_TRUE(monitor.StartThread() && monitor.StopThread());
    EXPECT_EQ("LUMRegMonitorThreadObject", Narrow(monitor.m_szThreadName));
}

} // namespace
