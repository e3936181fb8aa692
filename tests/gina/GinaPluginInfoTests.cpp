#include "Exceptions.h"
#include "FailingAllocation.h"
#include "GinaPluginContext.h"
#include "TestMachine.h"

namespace {

class GinaPluginInfo : public CTestMachine
{
protected:
    static WCHAR* Allocated(const char* szText)
    {
        const std::basic_string<WCHAR> text = Widen(szText);
        auto* szCopy = static_cast<WCHAR*>(LocalAlloc(LMEM_FIXED, (text.size() + 1) * sizeof(WCHAR)));
        text.copy(szCopy, text.size());
        szCopy[text.size()] = 0;
        return szCopy;
    }

    CGinaPluginInfo info{LUM_GINA_APP, LUM_GINA_MTM};
};

TEST_F(GinaPluginInfo, AssignmentCopiesDeeplyAndKeepsItsOwnTag)
{
    CGinaPluginInfo target(TEXT("OTHER"), LUM_GINA_MTM);
    {
        CGinaPluginInfo source(LUM_GINA_APP, LUM_GINA_MTM);
        EXPECT_TRUE(source.SetGinaDLL(TEXT("first.dll")));
        EXPECT_TRUE(source.SetGinaDLL(TEXT("source.dll")));
        source.m_szFriendlyName = Allocated("friendly");
        source.m_dwSpare1 = 1;
        source.m_dwWlxVersion = 2;
        source.m_dwLUMVersion = 3;
        source.m_dwSpare2 = 4;
        target = source;
    }
    EXPECT_STREQ("OTHER", Narrow(target.szAPP).c_str());
    EXPECT_STREQ("source.dll", Narrow(target.m_szGinaDLL).c_str());
    EXPECT_STREQ("friendly", Narrow(target.m_szFriendlyName).c_str());
    EXPECT_EQ(1u, target.m_dwSpare1);
    EXPECT_EQ(2u, target.m_dwWlxVersion);
    EXPECT_EQ(3u, target.m_dwLUMVersion);
    EXPECT_EQ(4u, target.m_dwSpare2);
    target = info;
    EXPECT_EQ(nullptr, target.m_szGinaDLL);
    EXPECT_EQ(nullptr, target.m_szFriendlyName);
    target = *&target;
    EXPECT_TRUE(Log().empty());
}

TEST_F(GinaPluginInfo, UnreadableNamesAreLeftOut)
{
    CGinaPluginInfo source(LUM_GINA_APP, LUM_GINA_MTM);
    source.SetGinaDLL(TEXT("source.dll"));
    // What a broken plugin may leave in its record.
    source.m_szFriendlyName = reinterpret_cast<WCHAR*>(0x10);
    info = source;
    source.m_szFriendlyName = nullptr;
    EXPECT_STREQ("source.dll", Narrow(info.m_szGinaDLL).c_str());
    EXPECT_EQ(nullptr, info.m_szFriendlyName);
    EXPECT_FALSE(info.SetGinaDLL(reinterpret_cast<WCHAR*>(0x10)));
    EXPECT_EQ(nullptr, info.m_szGinaDLL);
    EXPECT_EQ((std::vector<std::string>{"[EXCEPTION] wcscpy function call generated an exception",
                                        "[EXCEPTION] wcscpy function call generated an exception",
                                        "[WARNING] The requested operation failed or it was cancelled"}),
              Log());
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
    EXPECT_EQ((std::vector<std::string>{"[WARNING] Client pulling value that is NULL",
                                        "[WARNING] Client pushing value that is NULL"}),
              Log());
}

} // namespace
