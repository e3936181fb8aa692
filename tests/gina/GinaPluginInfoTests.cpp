#include "Exceptions.h"
#include "GinaPluginContext.h"
#include "TestMachine.h"

namespace {

class GinaPluginInfo : public CTestMachine
{
protected:
    CGinaPluginInfo info{LUM_GINA_APP, LUM_GINA_MTM};
};

TEST_F(GinaPluginInfo, AssignmentTakesEverythingButTheTagAndWhatCannotBeRead)
{
    CGinaPluginInfo target(TEXT("OTHER"), LUM_GINA_MTM);
    EXPECT_TRUE(info.SetGinaDLL(TEXT("first.dll")));
    EXPECT_TRUE(info.SetGinaDLL(TEXT("source.dll")));
    info.m_dwSpare1 = 1;
    info.m_dwWlxVersion = 2;
    info.m_dwLUMVersion = 3;
    info.m_dwSpare2 = 4;
    // What a broken plugin may leave in its record.
    info.m_szFriendlyName = reinterpret_cast<WCHAR*>(0x10);
    target = info;
    info.m_szFriendlyName = nullptr;
    target = *&target;
    EXPECT_STREQ("OTHER", Narrow(target.szAPP).c_str());
    EXPECT_STREQ("source.dll", Narrow(target.m_szGinaDLL).c_str());
    EXPECT_EQ(nullptr, target.m_szFriendlyName);
    EXPECT_EQ((std::vector<DWORD>{1, 2, 3, 4}),
              (std::vector<DWORD>{target.m_dwSpare1, target.m_dwWlxVersion, target.m_dwLUMVersion,
                                  target.m_dwSpare2}));
    EXPECT_FALSE(info.SetGinaDLL(reinterpret_cast<WCHAR*>(0x10)));
    EXPECT_EQ((Lines{"[EXCEPTION] wcscpy function call generated an exception", FAILED}), Log());
    target = info;
    EXPECT_EQ(nullptr, target.m_szGinaDLL);
}

TEST_F(GinaPluginInfo, ContextWarnsOfNullAndRefusesToBeWithoutAHost)
{
    SetTraceMask(0xFFF);
    EXPECT_THROW(CGinaPluginContext(LUM_GINA_APP, LUM_GINA_MTM, nullptr), CBadArgException);
    EXPECT_EQ(1, Count("[CONSTRUCTION ENTRY] CGinaPluginContext::CGinaPluginContext"));
    EXPECT_EQ(1, Count("[EXCEPTION] A bad argument was provided, Argument: hInstance"));
    EXPECT_EQ(0, Count("[CONSTRUCTION EXIT] CGinaPluginContext::CGinaPluginContext"));

    const auto hInstance = reinterpret_cast<HINSTANCE>(0x1000);
    CGinaPluginContext context(LUM_GINA_APP, LUM_GINA_MTM, hInstance);
    SetTraceMask(LEVEL_WARNING);
    ClearLog();
    EXPECT_EQ(nullptr, context.GetDLLInstanceHandle());
    context.SetDLLInstanceHandle(hInstance);
    EXPECT_EQ(hInstance, context.GetDLLInstanceHandle());
    context.SetWlxHandle(nullptr);
    EXPECT_EQ(
        (Lines{"[WARNING] Client pulling value that is NULL", "[WARNING] Client pushing value that is NULL"}),
        Log());
}

} // namespace
