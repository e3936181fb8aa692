// What the header for plugin authors says of the host's classes, compared with the classes.

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

#include "../abi/Slots.h"
#include "GinaObject.h"
#include "LUMPlugin.h"
#include "TestMachine.h"

namespace {

#pragma GCC diagnostic ignored "-Winvalid-offsetof"

#define SAME_PLACE(AUTHORS, HOSTS, FIELD) static_assert(offsetof(AUTHORS, FIELD) == offsetof(HOSTS, FIELD))

static_assert(sizeof(lum::CGinaPluginInfo) == sizeof(CGinaPluginInfo));
SAME_PLACE(lum::CGinaPluginInfo, CGinaPluginInfo, szAPP);
SAME_PLACE(lum::CGinaPluginInfo, CGinaPluginInfo, szMTM);
SAME_PLACE(lum::CGinaPluginInfo, CGinaPluginInfo, m_dwSpare1);
SAME_PLACE(lum::CGinaPluginInfo, CGinaPluginInfo, m_szFriendlyName);
SAME_PLACE(lum::CGinaPluginInfo, CGinaPluginInfo, m_szGinaDLL);
SAME_PLACE(lum::CGinaPluginInfo, CGinaPluginInfo, m_dwWlxVersion);
SAME_PLACE(lum::CGinaPluginInfo, CGinaPluginInfo, m_dwLUMVersion);
SAME_PLACE(lum::CGinaPluginInfo, CGinaPluginInfo, m_dwSpare2);

static_assert(sizeof(lum::CGinaPluginContext) == sizeof(CGinaPluginContext));
SAME_PLACE(lum::CGinaPluginContext, CGinaPluginContext, szAPP);
SAME_PLACE(lum::CGinaPluginContext, CGinaPluginContext, szMTM);
SAME_PLACE(lum::CGinaPluginContext, CGinaPluginContext, m_hDLLInstance);
SAME_PLACE(lum::CGinaPluginContext, CGinaPluginContext, m_hInstance);
SAME_PLACE(lum::CGinaPluginContext, CGinaPluginContext, m_hWlx);
SAME_PLACE(lum::CGinaPluginContext, CGinaPluginContext, m_GinaPluginInfo);

static_assert(sizeof(lum::CGinaNode) == sizeof(GinaNode));
SAME_PLACE(lum::CGinaNode, GinaNode, szAPP);
SAME_PLACE(lum::CGinaNode, GinaNode, szMTM);
SAME_PLACE(lum::CGinaNode, GinaNode, m_pItem);
SAME_PLACE(lum::CGinaNode, GinaNode, m_dwTag);
SAME_PLACE(lum::CGinaNode, GinaNode, pNext);
SAME_PLACE(lum::CGinaNode, GinaNode, pPrev);

SAME_PLACE(lum::CGinaObject, CGinaObject, szAPP);
SAME_PLACE(lum::CGinaObject, CGinaObject, szMTM);
SAME_PLACE(lum::CGinaObject, CGinaObject, m_pGinaPluginContext);

static_assert(lum::PLUGIN_INTERFACE_VERSION == LUM_INTERFACE_VERSION);

/// A pointer to a virtual operation holds its place in the table: the number of the slot.
template <typename Operation>
std::size_t SlotOf(Operation pfnOperation)
{
    ULONG_PTR nPlace = 0;
    std::memcpy(&nPlace, &pfnOperation, sizeof(nPlace));
    return (nPlace - 1) / sizeof(PVOID);
}

TEST(PluginHeader, SlotsAreThoseOfTheHostWherePluginsCallThem)
{
    EXPECT_EQ(0u, SlotOf(&CGinaObject::DeletingDestructor));
#define SAME_SLOT(SLOT, NAME)                                                                                \
    EXPECT_EQ(std::size_t(SLOT), SlotOf(&CGinaObject::NAME)) << #NAME;                                       \
    EXPECT_EQ(std::size_t(SLOT), SlotOf(&lum::CGinaObject::NAME)) << #NAME;
    ABI_CALLS(SAME_SLOT)
#undef SAME_SLOT
}

TEST(PluginHeader, StringsMayCrossTheBoundaryBothWays)
{
    CGinaPluginInfo info(TEXT("LUM_GINA"), TEXT("SOFTWARE\\ORX\\Test"));
    ASSERT_TRUE(info.SetGinaDLL(TEXT("host.dll")));
    // A compiler that knew both classes would take it that they are never the same object.
    void* volatile pRecord = &info;
    auto* pAuthors = static_cast<lum::CGinaPluginInfo*>(pRecord);
    EXPECT_TRUE(lum::ReplaceString(pAuthors->m_szGinaDLL, TEXT("author.dll")));
    EXPECT_TRUE(lum::SetFriendlyName(pAuthors, TEXT("")));
    EXPECT_TRUE(lum::SetFriendlyName(pAuthors, TEXT("friendly")));
    EXPECT_TRUE(lum::SetFriendlyName(pAuthors, pAuthors->m_szFriendlyName)) << "a copy of itself";
    CGinaPluginInfo copy(TEXT("LUM_GINA"), TEXT("SOFTWARE\\ORX\\Test"));
    copy = info;
    EXPECT_EQ(std::basic_string<WCHAR>(TEXT("author.dll")), copy.m_szGinaDLL);
    EXPECT_EQ(std::basic_string<WCHAR>(TEXT("friendly")), copy.m_szFriendlyName);
    EXPECT_TRUE(lum::SetFriendlyName(pAuthors, nullptr));
    EXPECT_EQ(nullptr, info.m_szFriendlyName);
}

class PluginTrace : public CTestMachine
{
protected:
    /// What is added to the log, without the seconds of its time.
    template <typename Write>
    std::string Added(Write write)
    {
        ClearLog();
        write();
        std::string line = RawLog();
        return line.erase(std::min<std::size_t>(17, line.size()), 2);
    }
};

TEST_F(PluginTrace, IsWrittenAsTheHostWrites)
{
    const WCHAR* const texts[] = {TEXT(""), TEXT("a text, ( 7 ) File.cpp"),
                                  TEXT("\u00E9\u20AC\u4E2De\u0301")};
    for (const DWORD dwMask : {0xFFFu, 0xF0u, 0x0u}) {
        SetTraceMask(dwMask);
        for (const DWORD dwLevel : {0x1u, 0x2u, 0x3u, 0x4u, 0x8u, 0x10u, 0x20u, 0x40u, 0x80u}) {
            for (const WCHAR* szText : texts) {
                bool bByHost = false, bByPlugin = false;
                const std::string byHost = Added([&] {
                    bByHost = IsTraceEnabled(dwLevel, LUM_GINA_MTM) &&
                              WriteLogLine(LUM_GINA_APP, GetLevelLabel(dwLevel), szText);
                });
                const std::string byPlugin =
                    Added([&] { bByPlugin = lum::WriteTrace(LUM_GINA_APP, dwLevel, szText); });
                EXPECT_EQ(bByHost, bByPlugin) << dwLevel;
                EXPECT_EQ(byHost, byPlugin) << dwLevel;
            }
        }
    }
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, OWN_KEY);
    EXPECT_FALSE(lum::WriteTrace(LUM_GINA_APP, lum::TRACE_NOTIFICATION, TEXT("text")));
    EXPECT_TRUE(lum::WriteTrace(LUM_GINA_APP, lum::TRACE_ERROR, TEXT("text")));
    EXPECT_FALSE(lum::WriteTrace(TEXT("NO_SUCH_TAG"), lum::TRACE_ERROR, TEXT("text")));
}

} // namespace
