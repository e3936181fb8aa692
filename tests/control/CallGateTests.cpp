#include <atomic>
#include <memory>

#include "CallGate.h"
#include "TestMachine.h"
#include "Thread.h"

namespace {

constexpr DWORD LONG_TIME = 60'000;

class CallGate : public CTestMachine
{
protected:
    CCallGate gate;
};

TEST_F(CallGate, NewCallsAndOtherChangesWaitForAChange)
{
    CHappening open;
    std::unique_ptr<CThread> pCaller;
    {
        const CCallGate::CClosing closing(gate, 0);
        ASSERT_TRUE(closing.IsClosed());
        CThread([&] { EXPECT_FALSE(CCallGate::CClosing(gate, LONG_TIME).IsClosed()); }).Join();
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

TEST_F(CallGate, NoCallIsInFlightDuringAChangeThatWaitsForTheList)
{
    std::atomic<int> nInFlight = 0;
    std::unique_ptr<CThread> threads[2];
    const auto prepare = [&] {
        threads[0] = std::make_unique<CThread>([&] {
            const CCallGate::CCall call(gate);
            ++nInFlight;
            gate.Look([] { return true; });
            --nInFlight;
        });
        Sleep(CCallGate::CHANGE_MILLISECONDS * 9 / 10);
        // The call loses its patience while the change waits for this one.
        CHappening held;
        threads[1] = std::make_unique<CThread>([&] {
            gate.Look([&] {
                held.Happen();
                Sleep(CCallGate::CHANGE_MILLISECONDS / 2);
            });
        });
        held.Wait();
    };
    EXPECT_TRUE(gate.Change([] { return true; }, prepare, [&] { return nInFlight == 0; }));
}

} // namespace
