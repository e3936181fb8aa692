#include <gtest/gtest.h>

#include <cfenv>
#include <string>

#include "Faults.h"
#include "../support/Thread.h"
#include "GuardedEnd.h"

namespace {

/// Runs call() in a guard and gives the code of the fault that it reported.
template <typename Call>
DWORD GetFault(Call call)
{
    return GetGuardedEnd(call).dwFault;
}

/// An operation of the host that fails.
void FailingOperation(int nNumber)
{
    CallBackIntoHost(CCaller(), [=] { throw CHostError(nNumber); });
}

/// That nothing of an earlier fault is left on this thread.
void ExpectSaneThread()
{
    EXPECT_EQ(std::current_exception(), nullptr);
    EXPECT_EQ(std::uncaught_exceptions(), 0);
    EXPECT_EQ(CHostError::s_nAlive, 0);
    volatile long double dDivisor = 0;
    volatile long double dQuotient = 1 / dDivisor;
    EXPECT_GT(dQuotient, 1) << "floating-point exceptions are masked again";
}

void ExpectEachFaultTwice()
{
    for (const CFault& fault : CFault::s_All) {
        EXPECT_EQ(GetFault(fault.pfnCommit), fault.dwCode) << fault.szName;
        EXPECT_EQ(GetFault(fault.pfnCommit), fault.dwCode) << fault.szName << ", again";
        ExpectSaneThread();
    }
}

} // namespace

TEST(FaultGuard, ReportsEachFaultByItsCodeAtAnyDepthAndOnAnyThread)
{
    ExpectEachFaultTwice();
    const DWORD dwOuter = GetFault([] {
        EXPECT_EQ(GetFault([] { EXPECT_EQ(GetFault(ReadNull), 0xC0000005); }), 0U);
        ExpectEachFaultTwice();
        CThread(ExpectEachFaultTwice).Join();
        CFault::s_All[3].pfnCommit();
    });
    EXPECT_EQ(dwOuter, CFault::s_All[3].dwCode);
}

TEST(FaultGuard, LeavesACallThatSucceedsAlone)
{
    struct CPair
    {
        int nFirst;
        double dSecond;
    };
    int nCalls = 0;
    CallIntoDLL([&] { ++nCalls; });
    const CPair pair = CallIntoDLL([&] { return CPair{++nCalls, 0.5}; });
    EXPECT_EQ(pair.nFirst, 2);
    EXPECT_EQ(pair.dSecond, 0.5);

    SetLastError(11);
    EXPECT_EQ(CallIntoDLL([] { return GetLastError(); }), 11U) << "the DLL sees the caller's";
    CallIntoDLL([] { SetLastError(12); });
    EXPECT_EQ(GetLastError(), 12U) << "the caller sees the DLL's";
}

TEST(FaultGuard, SurvivesAnyNumberOfFaults)
{
    for (int nRound = 1; nRound < 10000; ++nRound) {
        ASSERT_EQ(GetFault(ReadNull), 0xC0000005) << nRound;
        ASSERT_EQ(GetGuardedEnd([&] { FailingOperation(nRound); }).nHostError, nRound);
    }
    ExpectSaneThread();
}

TEST(FaultGuard, ClosesTheHandlersThatAFaultLeavesOpen)
{
    const DWORD dwCode = GetFault([] {
        try {
            throw std::string("in flight");
        } catch (const std::string&) {
            try {
                throw CHostError(1);
            } catch (const CHostError&) {
                ReadNull();
            }
        }
    });
    EXPECT_EQ(dwCode, 0xC0000005);
    ExpectSaneThread();
}

TEST(FaultGuard, RestoresTheFloatingPointUnit)
{
    std::fesetround(FE_UPWARD);
    for (const CFault& fault : CFault::s_All) {
        EXPECT_EQ(GetFault([&] {
                      std::fesetround(FE_TOWARDZERO);
                      fault.pfnCommit();
                  }),
                  fault.dwCode);
        EXPECT_EQ(std::fegetround(), FE_UPWARD) << fault.szName;
    }
    std::fesetround(FE_TONEAREST);
}

TEST(FaultGuard, PassesTheHostsOwnExceptionsToWhoeverOfTheHostCalls)
{
    const auto within = [](auto call) { return [=] { CallIntoDLL(call); }; };
    const auto handled = [] { EXPECT_EQ(GetEnd([] { FailingOperation(5); }).nHostError, 5); };
    struct
    {
        CEnd actual;
        CEnd expected;
    } const rows[] = {
        {GetEnd([] { FailingOperation(1); }), {1, 0}},
        {GetEnd(within([] { throw CHostError(2); })), {2, 0}},
        {GetEnd(within([] { FailingOperation(3); })), {3, 0}},
        {GetEnd(within(within([] { FailingOperation(4); }))), {4, 0}},
        {GetEnd(within([=] { CallBackIntoHost(CCaller(), handled); })), {0, 0}},
        {GetEnd(within([] { CallBackIntoHost(CCaller(), ReadNull); })), {0, 0xC0000005}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.actual, row.expected) << "row " << &row - rows;
    }
    ExpectSaneThread();
}

TEST(FaultGuardDeathTest, LeavesTheHostsOwnFaultsAlone)
{
    EXPECT_DEATH(ReadNull(), "");
    const auto afterGuard = [] {
        GetFault(ReadNull);
        CallBackIntoHost(CCaller(), ReadNull);
    };
    EXPECT_DEATH(afterGuard(), "");
}
