#include <algorithm>

#include "ReadableEnd.h"
#include "TestMachine.h"
#include "WinlogonObject.h"

namespace {

class WinlogonObject : public CTestMachine
{
protected:
    WinlogonObject()
    {
        for (std::size_t n = 0; n < ENTRIES; ++n) {
            m_pTable[n] = reinterpret_cast<PVOID>(0x1000 + n);
        }
    }

    /// The members in their order, as positions in Winlogon's table; -1 for null.
    std::vector<int> Members() const
    {
        static_assert(sizeof(object.m_pWlxAssignShellProtection) == sizeof(PVOID));
        std::vector<int> positions;
        const PVOID* pMember = reinterpret_cast<const PVOID*>(&object.m_pWlxAssignShellProtection);
        for (std::size_t n = 0; n < ENTRIES; ++n) {
            const auto nValue = static_cast<int>(reinterpret_cast<ULONG_PTR>(pMember[n]));
            positions.push_back(nValue == 0 ? -1 : nValue - 0x1000);
        }
        return positions;
    }

    /// The same for a table of so many entries.
    static std::vector<int> FirstOf(int nEntries)
    {
        std::vector<int> positions = {4,  12, 16, 17, 15, 6, 8,  9,  7, 23, 19, 13, 5, 21,
                                      25, 22, 24, 26, 2,  1, 18, 14, 3, 10, 11, 0,  20};
        std::replace_if(
            positions.begin(), positions.end(), [=](int nPosition) { return nPosition >= nEntries; }, -1);
        return positions;
    }

    static constexpr std::size_t ENTRIES = 27;
    PVOID m_pTable[ENTRIES];
    CWinlogonObject object{LUM_GINA_APP, LUM_GINA_MTM};
};

TEST_F(WinlogonObject, CopiesWhatTheVersionHas)
{
    struct
    {
        DWORD dwVersion;
        int nEntries;
    } const rows[] = {{0x0000FFFF, 0},  {0x00010000, 13}, {0x00010001, 17}, {0x00010002, 18},
                      {0x00010003, 25}, {0x00010004, 27}, {0x00020000, 27}};
    EXPECT_FALSE(object.CopyFunctions(m_pTable)) << "no version yet";
    for (const auto& row : rows) {
        EXPECT_TRUE(object.SetWinlogonObject(m_pTable, row.dwVersion));
        EXPECT_EQ(FirstOf(row.nEntries), Members()) << row.dwVersion;
        EXPECT_EQ(m_pTable, object.GetWinlogonFunctions());
        EXPECT_EQ(row.nEntries != 0, object.CopyFunctions(m_pTable));
    }
    EXPECT_EQ(3, Count("[EXCEPTION] A bad argument was provided, Argument: m_dwVersion"));
}

TEST_F(WinlogonObject, RefusesNoTableAndWarnsOfGaps)
{
    EXPECT_TRUE(object.SetWinlogonObject(nullptr, WLX_VERSION_1_4));
    EXPECT_EQ(FirstOf(0), Members());
    EXPECT_EQ(
        (std::vector<std::string>{"[EXCEPTION] A bad argument was provided, Argument: pWinlogonFunctions",
                                  "[WARNING] The requested operation failed or it was cancelled"}),
        Log());
    ClearLog();
    m_pTable[3] = nullptr;
    EXPECT_TRUE(object.SetWinlogonObject(m_pTable, WLX_VERSION_1_0));
    EXPECT_EQ(nullptr, object.GetWlxSetTimeout());
    EXPECT_NE(nullptr, object.m_pWlxUseCtrlAltDel);
    EXPECT_EQ((std::vector<std::string>{"[WARNING] Client pushing value that is NULL",
                                        "[WARNING] Client pulling value that is NULL"}),
              Log());
}

TEST_F(WinlogonObject, CopiesWhatCanBeRead)
{
    // A table of version 1.0 at the end of what is readable, from a GINA that calls it one of 1.4.
    const CReadableEnd memory;
    PVOID* const pTable = static_cast<PVOID*>(memory.GetEnd()) - 13;
    std::copy_n(m_pTable, 13, pTable);
    EXPECT_TRUE(object.SetWinlogonObject(pTable, WLX_VERSION_1_4));
    EXPECT_EQ(FirstOf(13), Members());
    EXPECT_FALSE(object.CopyFunctions(reinterpret_cast<PVOID>(0x40)));
    EXPECT_EQ(FirstOf(0), Members());
    const std::vector<std::string> failure{"[WARNING] An unhandled exception occurred",
                                           "[WARNING] The requested operation failed or it was cancelled"};
    EXPECT_EQ((std::vector<std::string>{failure[0], failure[1], failure[0], failure[1]}), Log());
}

} // namespace
