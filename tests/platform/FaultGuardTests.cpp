#include <gtest/gtest.h>

#include <cfenv>
#include <stdexcept>
#include <string>

#include "Faults.h"
#include "guard/FaultGuard.h"
#include "guard/StructuredExceptions.h"

namespace {

constexpr DWORD NO_FAULT = 0;

/// Runs call() in a guard and gives the code of the fault that it reported.
template <typename Call>
DWORD GetFault(Call call)
{
    try {
        GuardedCall(call);
    } catch (const CForeignFault& fault) {
        return fault.GetCode();
    }
    return NO_FAULT;
}

/// Stands for an exception of the host.
class CHostError : public std::runtime_error
{
public:
    explicit CHostError(int nNumber) : std::runtime_error("host"), m_nNumber(nNumber) {}

    int m_nNumber;
};

/// An operation of the host that fails, as a DLL calls it.
void FailingOperation(int nNumber)
{
    CalledFromDLL([&] { throw CHostError(nNumber); });
}

/// Runs call() and gives the number of the CHostError that left it; 0 when none did.
template <typename Call>
int GetHostError(Call call)
{
    try {
        call();
    } catch (const CHostError& error) {
        return error.m_nNumber;
    }
    return 0;
}

/// That nothing of an earlier fault is left on this thread.
void ExpectSaneThread()
{
    EXPECT_EQ(std::current_exception(), nullptr);
    EXPECT_EQ(std::uncaught_exceptions(), 0);
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

DWORD WINAPI ExpectEachFaultInThread(void*)
{
    ExpectEachFaultTwice();
    return 0;
}

} // namespace

TEST(FaultGuard, ReportsEachFaultByItsCode)
{
    ExpectEachFaultTwice();
}

TEST(FaultGuard, GuardsEachThreadByItself)
{
    const DWORD dwCode = GetFault([&] {
        const HANDLE hThread = CreateThread(nullptr, 0, ExpectEachFaultInThread, nullptr, 0, nullptr);
        EXPECT_EQ(WaitForSingleObject(hThread, INFINITE), WAIT_OBJECT_0);
        CloseHandle(hThread);
        ReadNull();
    });
    EXPECT_EQ(dwCode, 0xC0000005) << "the guard of the thread that waited is still there";
}

TEST(FaultGuard, ReportsAnyCodeThatIsRaised)
{
    if (!StructuredExceptions::AreAvailable()) {
        GTEST_SKIP() << "no such exceptions on this system";
    }
    for (const DWORD dwCode : {0xE0000001U, 0xC0000123U, 0x80000002U, 42U}) {
        EXPECT_EQ(GetFault([&] { StructuredExceptions::Raise(dwCode); }), dwCode);
    }
}

TEST(FaultGuard, LeavesACallThatSucceedsAlone)
{
    struct CPair
    {
        int nFirst;
        double dSecond;
    };
    int nCalls = 0;
    GuardedCall([&] { ++nCalls; });
    const CPair pair = GuardedCall([&] { return CPair{++nCalls, 0.5}; });
    EXPECT_EQ(pair.nFirst, 2);
    EXPECT_EQ(pair.dSecond, 0.5);

    SetLastError(11);
    EXPECT_EQ(GuardedCall([] { return GetLastError(); }), 11U) << "the DLL sees the caller's";
    GuardedCall([] { SetLastError(12); });
    EXPECT_EQ(GetLastError(), 12U) << "the caller sees the DLL's";
}

TEST(FaultGuard, NestsOneCallInAnother)
{
    const DWORD dwOuter = GetFault([] {
        EXPECT_EQ(GetFault([] { EXPECT_EQ(GetFault(ReadNull), 0xC0000005); }), NO_FAULT);
        ExpectEachFaultTwice();
        CFault::s_All[3].pfnCommit();
    });
    EXPECT_EQ(dwOuter, CFault::s_All[3].dwCode);
}

TEST(FaultGuard, SurvivesAnyNumberOfFaults)
{
    for (int nRound = 0; nRound < 10000; ++nRound) {
        ASSERT_EQ(GetFault(ReadNull), 0xC0000005) << nRound;
        ASSERT_EQ(GetHostError([&] { GuardedCall([&] { FailingOperation(nRound); }); }), nRound);
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

TEST(FaultGuard, PassesTheHostsOwnExceptions)
{
    EXPECT_EQ(GetHostError([] { FailingOperation(1); }), 1) << "outside all guards";
    EXPECT_EQ(GetHostError([] { GuardedCall([] { throw CHostError(2); }); }), 2) << "in the host's frames";
    EXPECT_EQ(GetHostError([] { GuardedCall([] { FailingOperation(3); }); }), 3) << "through a DLL's frames";
    EXPECT_EQ(GetHostError([] { GuardedCall([] { GuardedCall([] { FailingOperation(4); }); }); }), 4)
        << "from guard to guard";
    ExpectSaneThread();
}

TEST(FaultGuard, KeepsTheHostsExceptionsOrdinaryInHostFrames)
{
    GuardedCall([] {
        bool bDestroyed = false;
        struct CWitness
        {
            bool& bDestroyed;
            ~CWitness() { bDestroyed = true; }
        };
        const CHostFrames frames;
        EXPECT_EQ(GetHostError([&] {
                      const CWitness witness{bDestroyed};
                      FailingOperation(5);
                  }),
                  5);
        EXPECT_TRUE(bDestroyed) << "what lies between is destroyed";
        EXPECT_EQ(GetFault(ReadNull), 0xC0000005) << "calls from host frames are guarded";
    });
    EXPECT_EQ(GetHostError([] { GuardedCall([] { FailingOperation(6); }); }), 6) << "until their scope ends";
}

TEST(FaultGuard, LetsOneOperationHandleTheExceptionOfAnother)
{
    const int nResult =
        GuardedCall([] { return CalledFromDLL([] { return GetHostError([] { FailingOperation(7); }); }); });
    EXPECT_EQ(nResult, 7);
}

TEST(FaultGuard, FailsTheCallOfADLLThatMakesAnOperationFault)
{
    EXPECT_EQ(GetFault([] { CalledFromDLL(ReadNull); }), 0xC0000005);
}

TEST(FaultGuardDeathTest, LeavesTheHostsOwnFaultsAlone)
{
    EXPECT_DEATH(ReadNull(), "");
    EXPECT_DEATH(
        {
            GetFault([] {}); // with the guard's means in place
            ReadNull();
        },
        "");
    EXPECT_DEATH(GetFault([] {
                     const CHostFrames frames;
                     ReadNull();
                 }),
                 "");
    EXPECT_DEATH(GetFault([] {
                     const CHostFrames frames;
                     CalledFromDLL(ReadNull);
                 }),
                 "");
}
