#include <regex>

#include "LumctlMachine.h"
#include "platform/FaultInjection.h"

namespace {

class FailingWrites : public CLumctlMachine
{
protected:
    static void ExpectDoneOrPutBackOrSaid(const CRun& run, const Values& before, const Values& after,
                                          bool bForGood)
    {
        const Values now = GetValues();
        if (run.status == STATUS_DONE) {
            EXPECT_EQ(after, now);
        } else if (run.status == STATUS_FAILED) {
            EXPECT_EQ(before, now);
            EXPECT_TRUE(std::regex_search(run.error, std::regex("has been put back|Nothing has changed")));
        } else {
            EXPECT_EQ(STATUS_HALF_DONE, run.status);
            EXPECT_TRUE(bForGood);
            // Each value that is not what it was is named, and there is one.
            Values left = before;
            std::erase_if(left, [&](const auto& value) {
                return now.count(value.first) && now.at(value.first) == value.second;
            });
            for (const auto& [name, text] : now) {
                if (before.count(name) == 0) {
                    left[name] = text;
                }
            }
            EXPECT_FALSE(left.empty());
            static const std::regex named("HKEY_LOCAL_MACHINE[^;]* is [^;]* and not ");
            const std::string::const_iterator begin = run.error.begin();
            EXPECT_EQ(left.size(), std::distance(std::sregex_iterator(begin, run.error.end(), named), {}))
                << run.error;
        }
    }

    /// Has each write of a command fail.
    void TryEachWrite(const char* szChain, const char* szCommand)
    {
        SCOPED_TRACE(std::string("[") + szChain + "] " + szCommand);
        const Values before = ValuesOf(szChain);
        const auto start = [&] {
            DeleteGinaKeys();
            SetValues(before);
        };
        start();
        DWORD dwWrites = 0;
        {
            const CFaultInjection count(REGISTRY_WRITES, 1, ERROR_SUCCESS);
            EXPECT_EQ(STATUS_DONE, Run(szCommand).status);
            dwWrites = count.GetUses();
        }
        const Values after = GetValues();
        EXPECT_EQ(before != after, dwWrites != 0);
        for (DWORD dwWrite = 1; dwWrite <= dwWrites; ++dwWrite) {
            SCOPED_TRACE(dwWrite);
            for (const FaultRepeat repeat : {FaultRepeat::Once, FaultRepeat::FromThenOn}) {
                start();
                CRun run = {};
                {
                    const CFaultInjection fault(REGISTRY_WRITES, dwWrite, ERROR_ACCESS_DENIED, nullptr,
                                                repeat);
                    run = Run(szCommand);
                }
                ExpectDoneOrPutBackOrSaid(run, before, after, repeat == FaultRepeat::FromThenOn);
            }
        }
    }
};

TEST_F(FailingWrites, AreTakenBackOrTold)
{
    TryEachWrite("", "chain enable");
    TryEachWrite("wpnGina.dll PLinkGina.dll msgina.dll", "chain enable");
    TryEachWrite("lum_gina.dll wpnGina.dll msgina.dll", "chain disable");
    TryEachWrite("lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll", "chain remove wpnGina.dll");
    const char* const CHAINS[] = {"", "wpnGina.dll PLinkGina.dll qslogon.dll",
                                  "kvs_gina.dll wpnGina.dll lum_gina.dll msgina.dll"};
    for (const char* szSaved : CHAINS) {
        SetValues(ValuesOf(szSaved));
        ASSERT_EQ(STATUS_DONE, Run("chain backup --force saved.reg").status);
        for (const char* szCurrent : CHAINS) {
            TryEachWrite(szCurrent, "chain restore saved.reg");
        }
    }
}

} // namespace
