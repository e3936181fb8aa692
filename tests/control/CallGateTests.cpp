#include <memory>

#include "CallGate.h"
#include "Failures.h"
#include "TestMachine.h"
#include "Thread.h"
#include "platform/FaultGuard.h"

namespace {

constexpr DWORD LONG_TIME = 60'000;

bool CanClose(CCallGate& gate, DWORD dwMilliseconds = 0)
{
    return CCallGate::CClosing(gate, dwMilliseconds).IsClosed();
}

/// What f() gives on a thread of its own, which has ended by then.
template <typename F>
bool OnOtherThread(F f)
{
    bool bResult = false;
    CThread([&] { bResult = f(); }).Join();
    return bResult;
}

class CallGate : public CTestMachine
{
protected:
    CCallGate gate;
};

TEST_F(CallGate, ClosesOnceTheCallsInFlightHaveEnded)
{
    EXPECT_TRUE(CanClose(gate));
    CHappening givenUp;
    CHappening ended;
    auto pCall = std::make_unique<CCallGate::CCall>(gate);
    CThread closer([&] {
        EXPECT_FALSE(CanClose(gate, 20));
        givenUp.Happen();
        const CCallGate::CClosing closing(gate, LONG_TIME);
        EXPECT_TRUE(closing.IsClosed());
        EXPECT_TRUE(ended.HasHappened());
    });
    // Calls from within the call pass, however often, while the other thread waits.
    while (!givenUp.HasHappened()) {
        const CCallGate::CCall nested(gate);
    }
    ended.Happen();
    pCall.reset();
    closer.Join();
    EXPECT_TRUE(CanClose(gate));
}

TEST_F(CallGate, NewCallsWaitForAChange)
{
    CHappening open;
    std::unique_ptr<CThread> pCaller;
    {
        const CCallGate::CClosing closing(gate, 0);
        ASSERT_TRUE(closing.IsClosed());
        EXPECT_FALSE(OnOtherThread([&] { return CanClose(gate, LONG_TIME); })) << "one change at a time";
        // The thread of the change itself would wait for ever.
        const CCallGate::CCall own(gate);
        pCaller = std::make_unique<CThread>([&] {
            const CCallGate::CCall call(gate);
            EXPECT_TRUE(open.HasHappened());
        });
        Sleep(50);
        open.Happen();
    }
}

TEST_F(CallGate, OneChangeAfterTheOtherKeepsNoCallOut)
{
    CHappening closed;
    CHappening entered;
    int nChanges = 0;
    CThread closer([&] {
        for (; !entered.HasHappened() && nChanges < 100; ++nChanges) {
            const CCallGate::CClosing closing(gate, LONG_TIME);
            closed.Happen();
            Sleep(20);
        }
    });
    closed.Wait();
    {
        const CCallGate::CCall call(gate);
        entered.Happen();
    }
    closer.Join();
    EXPECT_LE(nChanges, 2) << "the one that it met, and the one behind it";
}

TEST_F(CallGate, AChangeFromWithinACallFailsAtOnce)
{
    const CCallGate::CCall call(gate);
    const DWORD dwStart = GetTickCount();
    EXPECT_FALSE(CanClose(gate, LONG_TIME));
    EXPECT_FALSE(gate.Change([] { return true; }, [] { return true; }));
    EXPECT_LT(GetTickCount() - dwStart, CCallGate::CHANGE_MILLISECONDS);
    EXPECT_EQ(1, Count("[WARNING] Calls are under way. The GINA object list was not changed"));
    EXPECT_TRUE(gate.Add([] { return true; })) << "an addition disturbs no call";
}

TEST_F(CallGate, AChangeIsAskedForBeforeAndAfterTheWait)
{
    int nAsked = 0;
    const auto allowed = [&] { return ++nAsked != 2; };
    EXPECT_FALSE(gate.Change(allowed, [] { return true; }));
    EXPECT_EQ(2, nAsked);
    {
        // What is not allowed does not even wait.
        nAsked = 1;
        const CCallGate::CCall call(gate);
        EXPECT_FALSE(gate.Change(allowed, [] { return true; }));
        EXPECT_TRUE(Log().empty());
    }
    EXPECT_FALSE(gate.Change([] { return true; }, [] { return false; }));
    EXPECT_TRUE(gate.Change([] { return true; }, [] { return true; }));
    EXPECT_TRUE(CanClose(gate));
}

TEST_F(CallGate, AFaultThatCutsFramesOffLeavesNothingBehind)
{
    const auto fault = [] { Fail(StandinFailure::ReadNull, 0); };
    const auto survive = [&](auto call) {
        const CCallGate::CThreadDepth depth(gate);
        EXPECT_THROW(GuardedCall(call), CForeignFault);
        depth.Restore();
    };
    const auto isWhole = [&] { return OnOtherThread([&] { return gate.Look([] { return true; }); }); };

    survive([&] {
        const CCallGate::CCall call(gate);
        const CCallGate::CCall nested(gate);
        gate.Look([&] { gate.Look(fault); });
    });
    EXPECT_TRUE(isWhole());
    EXPECT_TRUE(CanClose(gate));

    survive([&] {
        const CCallGate::CClosing closing(gate, 0);
        fault();
    });
    EXPECT_TRUE(OnOtherThread([&] { return CanClose(gate); }));

    // An outer call, in flight before, stays.
    const CCallGate::CCall outer(gate);
    survive([&] {
        const CCallGate::CCall call(gate);
        fault();
    });
    EXPECT_FALSE(OnOtherThread([&] { return CanClose(gate); }));
    const CCallGate::CThreadDepth depth(gate);
    depth.Restore();
    EXPECT_FALSE(OnOtherThread([&] { return CanClose(gate); })) << "nothing to restore";
}

} // namespace
