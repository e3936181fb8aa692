#include "Contract.h"
#include "GinaContext.h"
#include "Messages.h"
#include "WinlogonObject.h"
#include "WinlogonRegistry.h"

namespace {

TEST_F(Contract, WinlogonBoundary)
{
    const HINSTANCE hInstance = reinterpret_cast<HINSTANCE>(1);
    const HANDLE hWlx = reinterpret_cast<HANDLE>(2);
    CGinaContext context(TAG, KEY, hInstance);
    context.SetWlxHandle(hWlx);
    EXPECT_TRUE(context.m_hInstance == context.GetInstanceHandle() &&
                context.m_hWlx == context.GetWlxHandle());
    EXPECT_THROW(CGinaContext(TAG, KEY, nullptr), CBadArgException);

    WLX_DISPATCH_VERSION_1_4 table = {};
    table.WlxSetTimeout = [](HANDLE, DWORD) WINAPI -> BOOL { return TRUE; };
    CWinlogonObject winlogon(TAG, KEY);
    EXPECT_FALSE(winlogon.CopyFunctions(&table)) << "no version yet";
    EXPECT_TRUE(winlogon.SetWinlogonObject(&table, 0x00010004));
    EXPECT_TRUE(winlogon.m_dwVersion == 0x00010004 && winlogon.m_pWinlogonFunctions == &table);
    EXPECT_TRUE(winlogon.GetWinlogonFunctions() == &table &&
                winlogon.GetWlxSetTimeout() == table.WlxSetTimeout);

    CWinlogonRegistry registry(TAG, KEY);
    WCHAR szGinaDLL[260];
    if (registry.m_pGinaDLL == nullptr) {
        EXPECT_FALSE(registry.GetGinaDLL(szGinaDLL, 260, true));
    }
    EXPECT_TRUE(registry.SetGinaDLL(TEXT("lum_gina.dll")) && registry.GetGinaDLL(szGinaDLL, 260, false));
    EXPECT_EQ("lum_gina.dll", Narrow(szGinaDLL));
    EXPECT_TRUE(registry.m_pGinaDLL->DeleteRegistryValue());
    EXPECT_EQ("GinaDLL", Narrow(registry.m_pGinaDLL->m_szValueName));
}

} // namespace
