#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include <windows.h>

#include "AbiPlugin.h"
#include "guard/FaultGuard.h"

namespace {

constexpr int OWN_ERROR = 7;

class CHostError : public std::runtime_error
{
public:
    static int s_nAlive;

    explicit CHostError(int nNumber) : std::runtime_error("host"), m_nNumber(nNumber) { ++s_nAlive; }
    CHostError(const CHostError& other) : std::runtime_error(other), m_nNumber(other.m_nNumber)
    {
        ++s_nAlive;
    }
    ~CHostError() override { --s_nAlive; }

    int m_nNumber;
};

int CHostError::s_nAlive = 0;

void __cdecl SucceedingOperation(void*) {}

/// Throws 7, 8, 9...: the context counts the calls.
void __cdecl FailingOperation(void* pContext)
{
    CalledFromDLL([&] { throw CHostError(OWN_ERROR + (*static_cast<int*>(pContext))++); });
}

void __cdecl FaultingOperation(void*)
{
    CalledFromDLL([] { RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr); });
}

void __cdecl RaisingOperation(void* pContext)
{
    RaiseException(*static_cast<DWORD*>(pContext), 0, 0, nullptr);
}

/// How a guarded call ended.
struct CEnd
{
    int nHostError = 0;
    DWORD dwFault = 0;
};

template <typename Call>
CEnd GetEnd(Call call)
{
    try {
        GuardedCall(call);
    } catch (const CHostError& error) {
        return {error.m_nNumber, 0};
    } catch (const CForeignFault& fault) {
        return {0, fault.GetCode()};
    }
    return {};
}

class AbiPlugin : public testing::Test
{
protected:
    AbiScenario Find(const char* szName) const
    {
        return reinterpret_cast<AbiScenario>(reinterpret_cast<void*>(GetProcAddress(m_hPlugin, szName)));
    }

    ~AbiPlugin() override { FreeLibrary(m_hPlugin); }

    const HMODULE m_hPlugin = LoadLibraryW(TEXT("abi_plugin.dll"));
};

} // namespace

TEST_F(AbiPlugin, SeesAndPassesWhatItsFramesAreMeantTo)
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
        const CEnd end = GetEnd([&] { pfnScenario(row.pfnOperation, &nCalls, &report); });
        EXPECT_EQ(end.nHostError, row.end.nHostError);
        EXPECT_EQ(end.dwFault, row.end.dwFault);
        EXPECT_EQ(report.nEntered, row.report.nEntered);
        EXPECT_EQ(report.nDestroyed, row.report.nDestroyed);
        EXPECT_EQ(report.nCaught, row.report.nCaught);
        EXPECT_EQ(report.dwCode, row.report.dwCode);
        EXPECT_EQ(CHostError::s_nAlive, 0) << "the exception was released";
    }
}

/// A call of a plugin's on a thread that the plugin has started.
struct CPluginThread
{
    static DWORD WINAPI Run(void* pContext)
    {
        auto& self = *static_cast<CPluginThread*>(pContext);
        self.pfnScenario(FailingOperation, &self.nCalls, &self.report);
        return 0;
    }

    AbiScenario pfnScenario;
    int nCalls = 0;
    AbiReport report = {};
};

TEST_F(AbiPlugin, SeesAFailureAlsoOnAThreadOfItsOwn)
{
    CPluginThread call{Find("Swallow")};
    const HANDLE hThread = CreateThread(nullptr, 0, CPluginThread::Run, &call, 0, nullptr);
    EXPECT_EQ(WaitForSingleObject(hThread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(hThread);
    EXPECT_EQ(call.report.nCaught, 1);
    EXPECT_EQ(call.report.nDestroyed, 1);
    EXPECT_EQ(CHostError::s_nAlive, 0) << "the exception was released";
}

TEST_F(AbiPlugin, NotificationsAndFaultsOfHostFramesGoToWhoeverHandlesThemFurtherOut)
{
    const AbiScenario pfnWinlogon = Find("SwallowAsStructured");
    const auto pfnNotify = [](void* pContext) { GuardedCall([&] { RaisingOperation(pContext); }); };
    const auto pfnFault = [](void* pContext) {
        GuardedCall([&] {
            const CHostFrames frames;
            RaisingOperation(pContext);
        });
    };
    struct
    {
        AbiOperation pfnOperation;
        DWORD dwCode;
    } rows[] = {
        {pfnNotify, 0x80000001}, {pfnNotify, 0x80000003}, {pfnNotify, 0x80000004},
        {pfnNotify, 0x40010006}, {pfnNotify, 0x406D1388}, {pfnFault, 0xC0000005},
    };
    for (auto& row : rows) {
        AbiReport report = {};
        pfnWinlogon(row.pfnOperation, &row.dwCode, &report);
        EXPECT_EQ(report.nCaught, 1);
        EXPECT_EQ(report.dwCode, row.dwCode);

        int nCalls = 0;
        EXPECT_THROW(FailingOperation(&nCalls), CHostError) << "the guard that was passed over is gone";
    }
}
