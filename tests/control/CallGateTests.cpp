#include <atomic>
#include <memory>

#include "CallGate.h"
#include "TestMachine.h"
#include "Thread.h"

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

TEST_F(CallGate, ChangesInARowLetAWaitingCallPassInBetween)
{
    CHappening called;
    CThread changes([&] {
        while (!called.HasHappened()) {
            const CCallGate::CClosing closing(gate, LONG_TIME);
            Sleep(5);
        }
    });
    for (int n = 0; n < 20; ++n) {
        const DWORD dwStart = GetTickCount();
        {
            const CCallGate::CCall call(gate);
        }
        // It waited for one change, perhaps for the next; left to chance it would be many.
        EXPECT_LT(GetTickCount() - dwStart, 1000u);
    }
    called.Happen();
    changes.Join();
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

TEST_F(CallGate, AChangeIsAskedForBeforeTheWaitAndAfterIt)
{
    const auto succeed = [] { return true; };
    const auto fail = [] { return false; };
    std::atomic<int> nAsked = 0;
    {
        // What is not allowed does not even wait.
        const CCallGate::CCall call(gate);
        EXPECT_FALSE(gate.Change(fail, succeed));
        EXPECT_TRUE(Log().empty());
    }
    {
        auto pCall = std::make_unique<CCallGate::CCall>(gate);
        CThread change([&] { EXPECT_FALSE(gate.Change([&] { return ++nAsked != 2; }, succeed)); });
        while (nAsked == 0) {
            Sleep(1);
        }
        pCall.reset();
    }
    EXPECT_EQ(2, nAsked);
    EXPECT_FALSE(gate.Change(fail, succeed));
    EXPECT_FALSE(gate.Change(succeed, fail));
    EXPECT_TRUE(gate.Change([&] { return ++nAsked == 3; }, succeed)) << "asked once without a call in flight";
    EXPECT_TRUE(CanClose(gate));
}

TEST_F(CallGate, ACallWaitsForNoPreparationThatDoesNotEnd)
{
    const auto succeed = [] { return true; };
    CHappening inside;
    bool bOver = false;
    std::unique_ptr<CThread> pCaller;
    const auto prepare = [&] {
        pCaller = std::make_unique<CThread>([&] {
            const CCallGate::CCall call(gate);
            inside.Happen();
            Sleep(50);
            bOver = true;
        });
        inside.Wait();
    };
    EXPECT_TRUE(gate.Change(succeed, prepare, [&] { return bOver; })) << "waits for the call that went on";
}

} // namespace
