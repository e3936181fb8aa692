#include "LumctlMachine.h"
#include "platform/FaultInjection.h"

namespace {

class FailingWrites : public CLumctlMachine
{
protected:
    /// How many changes of the registry a command makes.
    static DWORD CountWrites(const Values& values, const std::string& command)
    {
        SetValues(values);
        const CFaultInjection count(REGISTRY_WRITES, 1, ERROR_SUCCESS);
        EXPECT_EQ(STATUS_DONE, Run(command).status) << command;
        return count.GetUses();
    }
};

const struct
{
    const char* szChain;
    const char* szCommand;
} ROWS[] = {
    {"", "chain enable"},
    {"wpnGina.dll PLinkGina.dll msgina.dll", "chain enable"},
    {"lum_gina.dll wpnGina.dll msgina.dll", "chain disable"},
    {"lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll", "chain remove wpnGina.dll"},
    {"lum_gina.dll kvs_gina.dll msgina.dll", "chain restore saved.reg"},
};

TEST_F(FailingWrites, WhatWasThereIsPutBackOrTheMessageSaysThatItIsNot)
{
    SetValues(ValuesOf("wpnGina.dll PLinkGina.dll qslogon.dll"));
    ASSERT_EQ(STATUS_DONE, Run("chain backup --force saved.reg").status);
    for (const auto& row : ROWS) {
        const Values before = ValuesOf(row.szChain);
        const DWORD dwWrites = CountWrites(before, row.szCommand);
        const Values after = GetValues();
        ASSERT_GT(dwWrites, 0u);
        for (DWORD dwWrite = 1; dwWrite <= dwWrites; ++dwWrite) {
            for (const bool bForGood : {false, true}) {
                DeleteGinaKeys();
                SetValues(before);
                CRun run = {};
                {
                    const CFaultInjection fault(REGISTRY_WRITES, dwWrite, ERROR_ACCESS_DENIED, nullptr,
                                                bForGood ? FaultRepeat::FromThenOn : FaultRepeat::Once);
                    run = Run(row.szCommand);
                }
                const Values now = GetValues();
                if (run.status == STATUS_DONE) {
                    EXPECT_EQ(after, now) << row.szCommand << dwWrite;
                } else if (run.status == STATUS_FAILED) {
                    EXPECT_EQ(before, now) << row.szCommand << dwWrite;
                    EXPECT_NE(std::string::npos, run.error.find("has been put back")) << run.error;
                } else {
                    EXPECT_EQ(STATUS_HALF_DONE, run.status) << row.szCommand << dwWrite;
                    EXPECT_TRUE(bForGood);
                    EXPECT_NE(std::string::npos, run.error.find("HALF DONE")) << run.error;
                }
            }
        }
    }
}

TEST_F(FailingWrites, TheMachineComesUpAfterEachWrite)
{
    const char* const CHAINS[] = {
        "",
        "lum_gina.dll msgina.dll",
        "wpnGina.dll PLinkGina.dll msgina.dll",
        "kvs_gina.dll wpnGina.dll lum_gina.dll msgina.dll",
    };
    for (const char* szSaved : CHAINS) {
        SetValues(ValuesOf(szSaved));
        ASSERT_EQ(STATUS_DONE, Run("chain backup --force saved.reg").status);
        for (const char* szCurrent : CHAINS) {
            const DWORD dwWrites = CountWrites(ValuesOf(szCurrent), "chain restore saved.reg");
            for (DWORD dwWrite = 1; dwWrite <= dwWrites; ++dwWrite) {
                SetValues(ValuesOf(szCurrent));
                const CFaultInjection stop = CFaultInjection::StopMachine(dwWrite);
                Run("chain restore saved.reg");
                EXPECT_EQ("", Boot(GetValues(), {}))
                    << szCurrent << " -> " << szSaved << ", write " << dwWrite;
            }
        }
    }
}

} // namespace
