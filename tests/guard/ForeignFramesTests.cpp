// Exceptions and faults that go through frames of the compiler that real plugins are built with.

#include <gtest/gtest.h>

#include <windows.h>

#include "Faults.h"
#include "../support/Thread.h"
#include "ForeignFrames.h"
#include "GuardedEnd.h"

namespace {

void __cdecl SucceedingOperation(void*) {}

/// Throws 7, 8, 9...: the context counts the calls.
void __cdecl FailingOperation(void* pContext)
{
    CallBackIntoHost(CCaller(), [=] { throw CHostError(7 + (*static_cast<int*>(pContext))++); });
}

void __cdecl FaultingOperation(void*)
{
    CallBackIntoHost(CCaller(), ReadNull);
}

void __cdecl RaisingOperation(void* pContext)
{
    RaiseException(*static_cast<DWORD*>(pContext), 0, 0, nullptr);
}

class ForeignFrames : public testing::Test
{
protected:
    ~ForeignFrames() override
    {
        FreeLibrary(m_hPlugin);
        EXPECT_EQ(CHostError::s_nAlive, 0) << "every exception was released";
    }

    AbiScenario Find(const char* szName) const
    {
        return reinterpret_cast<AbiScenario>(reinterpret_cast<void*>(GetProcAddress(m_hPlugin, szName)));
    }

    const HMODULE m_hPlugin = LoadLibraryW(TEXT("foreign_frames.dll"));
};

/// Plugins one behind the other, and a GINA that faults at their end.
struct CChain
{
    static void __cdecl CallNext(void* pContext)
    {
        CallBackIntoHost(CCaller(), [=] {
            auto& self = *static_cast<CChain*>(pContext);
            const int nLeft = self.nPlugins--;
            try {
                CallIntoDLL(
                    [&] { nLeft == 0 ? ReadNull() : self.pfnPlugin(CallNext, pContext, &self.report); });
            } catch (const CForeignFault&) {
                throw CHostError(100);
            } catch (const CHostError& error) {
                throw CHostError(error.m_nNumber + 1);
            }
        });
    }

    AbiScenario pfnPlugin;
    int nPlugins;
    AbiReport report = {};
};

/// While it exists, the process finds itself with a debugger. It has none, so that whatever goes to a
/// debugger goes to the handler further out.
class CDebugger
{
public:
    CDebugger() { GetFlag() = 1; }
    ~CDebugger() { GetFlag() = 0; }
    CDebugger(const CDebugger&) = delete;
    CDebugger& operator=(const CDebugger&) = delete;

private:
    /// In the process environment block, which the thread's block points to.
    static BYTE& GetFlag()
    {
        BYTE* pProcess = nullptr;
        asm("movl %%fs:0x30, %0" : "=r"(pProcess));
        return pProcess[2];
    }
};

} // namespace

TEST_F(ForeignFrames, SeeAndPassWhatTheyAreMeantTo)
{
    struct
    {
        const char* szScenario;
        AbiOperation pfnOperation;
        CEnd end;
        AbiReport report; // entered, destroyed, caught, code
    } const rows[] = {
        {"PassThrough", SucceedingOperation, {}, {2, 2, 0, 0}},
        {"PassThrough", FailingOperation, {7, 0}, {2, 2, 0, 0}},
        {"Swallow", FailingOperation, {}, {1, 1, 1, 0}},
        {"CatchAndRethrow", FailingOperation, {7, 0}, {2, 2, 1, 0}},
        {"RethrowAfterAnother", FailingOperation, {7, 0}, {1, 1, 2, 0}},
        {"CatchAndThrowOwn", FailingOperation, {0, 0xE06D7363}, {1, 1, 1, 0}},
        {"ThrowOwn", SucceedingOperation, {0, 0xE06D7363}, {1, 1, 0, 0}},
        {"ThrowAndCatchOwn", SucceedingOperation, {}, {0, 0, 1, 0}},
        {"ThrowAndCatchOwn", FailingOperation, {7, 0}, {0, 0, 0, 0}},
        // The other compiler has faults leave objects as they are, but runs what must be run finally.
        {"WriteNull", SucceedingOperation, {0, 0xC0000005}, {1, 0, 0, 0}},
        {"DivideByZero", SucceedingOperation, {0, 0xC0000094}, {1, 0, 0, 0}},
        {"EndWithFinally", FaultingOperation, {0, 0xC0000005}, {1, 1, 0, 0}},
        {"FaultWhileUnwinding", FailingOperation, {0, 0xC0000005}, {1, 1, 0, 0}},
        {"SwallowAsStructured", FailingOperation, {}, {0, 0, 1, 0xE06D7363}},
        {"EndWithFinally", FailingOperation, {7, 0}, {1, 1, 0, 0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szScenario);
        const AbiScenario pfnScenario = Find(row.szScenario);
        ASSERT_NE(pfnScenario, nullptr);
        int nCalls = 0;
        AbiReport report = {};
        EXPECT_EQ(GetGuardedEnd([&] { pfnScenario(row.pfnOperation, &nCalls, &report); }), row.end);
        EXPECT_EQ(report.nEntered, row.report.nEntered);
        EXPECT_EQ(report.nDestroyed, row.report.nDestroyed);
        EXPECT_EQ(report.nCaught, row.report.nCaught);
        EXPECT_EQ(report.dwCode, row.report.dwCode);
        EXPECT_EQ(CHostError::s_nAlive, 0) << "the exception was released";
    }
}

TEST_F(ForeignFrames, SeeAFailureBehindAnyNumberOfThem)
{
    for (int nPlugins = 0; nPlugins < 5; ++nPlugins) {
        CChain chain{Find("PassThrough"), nPlugins};
        EXPECT_EQ(GetEnd([&] { CChain::CallNext(&chain); }), (CEnd{100 + nPlugins, 0}));
        EXPECT_EQ(chain.report.nDestroyed, 2 * nPlugins);
    }
}

TEST_F(ForeignFrames, SeeAFailureAlsoOnAThreadOfTheirOwn)
{
    const AbiScenario pfnScenario = Find("Swallow");
    int nCalls = 0;
    AbiReport report = {};
    CThread([&] { pfnScenario(FailingOperation, &nCalls, &report); }).Join();
    EXPECT_EQ(report.nCaught, 1);
    EXPECT_EQ(report.nDestroyed, 1);
}

TEST_F(ForeignFrames, FailWithWhateverIsRaisedInThem)
{
    // That of a thread's name and that of debug output are among them: whoever raises those handles them.
    for (DWORD dwCode : {0xE0000001U, 0xC0000123U, 0x80000002U, 0x40010006U, 0x406D1388U, 42U}) {
        EXPECT_EQ(GetGuardedEnd([&] { RaisingOperation(&dwCode); }), (CEnd{0, dwCode}));
    }
    EXPECT_EQ(GetGuardedEnd([] { OutputDebugStringW(TEXT("")); }), CEnd());

    void* const pPage = VirtualAlloc(nullptr, 1, MEM_COMMIT, PAGE_READWRITE | PAGE_GUARD);
    const auto touch = [=] { *static_cast<volatile char*>(pPage) = 1; };
    EXPECT_EQ(GetGuardedEnd(touch), (CEnd{0, 0x80000001}));
    EXPECT_EQ(GetGuardedEnd(touch), CEnd()) << "the system guards a page once";
    VirtualFree(pPage, 0, MEM_RELEASE);
}

TEST_F(ForeignFrames, LeaveToADebuggerWhatItWaitsFor)
{
    const CDebugger debugger;
    const AbiScenario pfnOutside = Find("SwallowAsStructured");
    for (DWORD dwCode : {0x80000003U, 0x80000004U}) {
        AbiReport report = {};
        pfnOutside([](void* pContext) { CallIntoDLL([=] { RaisingOperation(pContext); }); }, &dwCode,
                   &report);
        EXPECT_EQ(report.dwCode, dwCode);

        int nCalls = 0;
        EXPECT_THROW(FailingOperation(&nCalls), CHostError) << "the guard that was passed over is gone";
    }
    EXPECT_EQ(GetGuardedEnd(ReadNull), (CEnd{0, 0xC0000005})) << "a fault is one also then";
}
