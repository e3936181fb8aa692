#include "Contract.h"
#include "GinaObject.h"
#include "GinaPluginContext.h"
#include "GinaPluginInfo.h"
#include "GinaPluginObject.h"
#include "GinaStandardObject.h"
#include "Messages.h"

namespace {

const HINSTANCE HOST = reinterpret_cast<HINSTANCE>(1);

TEST_F(Contract, GinaObjectsRecords)
{
    CGinaPluginContext context(TAG, KEY, HOST);
    CGinaPluginInfo info(TAG, KEY);
    EXPECT_TRUE(info.m_szGinaDLL == nullptr && info.m_szFriendlyName == nullptr && info.m_dwSpare1 == 0);
    EXPECT_TRUE(info.SetGinaDLL(TEXT("x.dll")));
    info.m_dwWlxVersion = 0x00010004;
    context.SetGinaPluginInfo(info);
    EXPECT_EQ("x.dll", Narrow(context.m_GinaPluginInfo.m_szGinaDLL));
    EXPECT_EQ(0x00010004u, context.m_GinaPluginInfo.m_dwWlxVersion);
    context.SetDLLInstanceHandle(HOST);
    context.SetWlxHandle(HOST);
    EXPECT_TRUE(context.GetDLLInstanceHandle() == HOST && context.m_hInstance == HOST &&
                context.m_hWlx == HOST);
    EXPECT_THROW(CGinaPluginContext(TAG, KEY, nullptr), CBadArgException);
}

TEST_F(Contract, GinaObjectsInAChain)
{
    CListEx<CGinaObject> list(TAG, KEY);
    ASSERT_TRUE(list.Add(
        new CGinaPluginObject(TAG, KEY, HOST, TEXT("test_plugin_a.dll"), 0x01000000, 0x00010004), 0));
    ASSERT_TRUE(list.Add(
        new CGinaStandardObject(TAG, KEY, HOST, TEXT("standin_gina.dll"), 0x01000000, 0x00010004), 0));
    NodeType<CGinaObject>* pNode = list.m_pHead;
    CGinaObject* pPlugin = pNode->m_pItem;
    CGinaObject* pStandard = pNode->pNext->m_pItem;
    EXPECT_TRUE(*pPlugin == TEXT("TEST_PLUGIN_A.DLL") && !(*pPlugin == *pStandard));
    CGinaPluginContext* pContext = pPlugin->m_pGinaPluginContext;
    EXPECT_TRUE(pContext->m_hDLLInstance != nullptr && pContext->m_hInstance == HOST);
    PVOID pWlxContext = nullptr;
    EXPECT_TRUE(pStandard->Initialize(nullptr, 1, nullptr, HOST, nullptr, nullptr, &pWlxContext, 0, 0));
    EXPECT_TRUE(pPlugin->IsLockOk(pNode, pWlxContext));
    const int nAction = pPlugin->WkstaLockedSAS(pNode, pWlxContext, 1);
    EXPECT_EQ(nAction, pStandard->WkstaLockedSAS(pNode->pNext, pWlxContext, 1));
    EXPECT_THROW(pPlugin->Logoff(pNode->pNext, pWlxContext), CUnexpectedEndOfListException);
    EXPECT_THROW(pStandard->Logoff(pNode, pWlxContext), CUnexpectedGinaException);
    CGinaPluginInfo info(TAG, KEY);
    EXPECT_TRUE(pStandard->QueryPluginInfo(&info) && !pStandard->QueryPlugin(&info, 1, 2, 3));
    EXPECT_EQ("standin_gina.dll", Narrow(info.m_szGinaDLL));
    EXPECT_THROW(CGinaStandardObject(TAG, KEY, HOST, TEXT("none.dll"), 0x01000000, 0x00010004),
                 CUnableToLoadDLLException);

    // Through the base, whose first slot destroys.
    CGinaObject* pAlone = new CGinaStandardObject(TAG, KEY, HOST, TEXT("msgina.dll"), 0x01000000, 0x00010004);
    EXPECT_NE(nullptr, GetModuleHandleW(TEXT("msgina.dll")));
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdelete-non-virtual-dtor"
    delete pAlone;
#pragma GCC diagnostic pop
    EXPECT_EQ(nullptr, GetModuleHandleW(TEXT("msgina.dll")));
}

} // namespace
