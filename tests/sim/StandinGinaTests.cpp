#include "StandinGina.h"

#include <cstring>

#include <gtest/gtest.h>
#include <winwlx.h>

#include "Library.h"
#include "machine/Text.h"
#include "guard/FaultGuard.h"

namespace {

/// The stand-in GINA as any other program finds it: by the exports of the DLL.
class StandinGina : public testing::Test
{
protected:
    StandinGina()
    {
        m_library.Load("standin_gina.dll");
        m_pStandin = Find<PFN_STANDIN_GINA>("StandinGina")();
        m_pStandin->Reset();
    }

    template <typename Function>
    Function Find(const char* szName) const
    {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(m_library.FindExport(szName)));
    }

    CLibrary m_library;
    const StandinInterface* m_pStandin;
};

#define STANDIN_ENTRY(NAME) Find<decltype(&NAME)>(#NAME)

TEST_F(StandinGina, RecordsEveryCallInOrderWithItsArguments)
{
    WCHAR szDesktop[] = TEXT("winsta0\\default");
    WCHAR szCommand[] = TEXT("notepad.exe");
    int nContext = 0;
    int nEnvironment = 0;
    STANDIN_ENTRY(WlxIsLockOk)(&nContext);
    STANDIN_ENTRY(WlxStartApplication)(&nContext, szDesktop, &nEnvironment, szCommand);
    STANDIN_ENTRY(WlxActivateUserShell)(&nContext, nullptr, nullptr, nullptr);
    std::memset(szCommand, 0, sizeof(szCommand));

    ASSERT_EQ(m_pStandin->GetRecordCount(), 3u);
    EXPECT_EQ(m_pStandin->GetRecord(0)->call, StandinCall::WlxIsLockOk);
    EXPECT_EQ(m_pStandin->GetRecord(0)->dwArguments, 1u);
    const StandinRecord& start = *m_pStandin->GetRecord(1);
    EXPECT_EQ(start.call, StandinCall::WlxStartApplication);
    EXPECT_EQ(start.dwArguments, 4u);
    const void* const arguments[] = {&nContext, szDesktop, &nEnvironment, szCommand};
    for (DWORD dwIndex = 0; dwIndex < 4; ++dwIndex) {
        EXPECT_EQ(start.argument[dwIndex], reinterpret_cast<ULONG_PTR>(arguments[dwIndex])) << dwIndex;
    }
    EXPECT_EQ(ToNarrow(start.szText[1]), "winsta0\\default");
    EXPECT_EQ(ToNarrow(start.szText[3]), "notepad.exe") << "a copy outlives the caller's text";
    EXPECT_EQ(m_pStandin->GetRecord(2)->szText[1], nullptr);
    EXPECT_EQ(m_pStandin->GetRecord(3), nullptr);
}

TEST_F(StandinGina, AnswersWhatItIsToldUntilReset)
{
    const auto isLockOk = STANDIN_ENTRY(WlxIsLockOk);
    const auto loggedOnSas = STANDIN_ENTRY(WlxLoggedOnSAS);
    for (const LONG nResult : {0, 7, -1}) {
        m_pStandin->SetResult(StandinCall::WlxIsLockOk, nResult);
        m_pStandin->SetResult(StandinCall::WlxLoggedOnSAS, nResult);
        EXPECT_EQ(isLockOk(nullptr), nResult);
        EXPECT_EQ(loggedOnSas(nullptr, WLX_SAS_TYPE_TIMEOUT, nullptr), nResult);
        EXPECT_EQ(m_pStandin->GetRecord(m_pStandin->GetRecordCount() - 1)->nResult, nResult);
    }
    m_pStandin->Reset();
    EXPECT_EQ(m_pStandin->GetRecordCount(), 0u);
    EXPECT_EQ(isLockOk(nullptr), TRUE);
    EXPECT_EQ(loggedOnSas(nullptr, WLX_SAS_TYPE_TIMEOUT, nullptr), WLX_SAS_ACTION_NONE);
}

TEST_F(StandinGina, StoresTheVersionItIsToldEvenWhenItRefuses)
{
    m_pStandin->SetVersion(WLX_VERSION_1_0);
    m_pStandin->SetResult(StandinCall::WlxNegotiate, FALSE);
    DWORD dwVersion = WLX_VERSION_1_4;
    EXPECT_FALSE(STANDIN_ENTRY(WlxNegotiate)(WLX_VERSION_1_4, &dwVersion));
    EXPECT_EQ(dwVersion, DWORD(WLX_VERSION_1_0));
    EXPECT_EQ(m_pStandin->GetRecord(0)->written[1], std::uint64_t(WLX_VERSION_1_0));
}

TEST_F(StandinGina, LeavesRecognisableValuesBehindOutPointers)
{
    LUID id = {};
    DWORD dwOptions = 0;
    HANDLE hToken = nullptr;
    WLX_MPR_NOTIFY_INFO info = {};
    PVOID pProfile = nullptr;
    STANDIN_ENTRY(WlxLoggedOutSAS)
    (nullptr, WLX_SAS_TYPE_CTRL_ALT_DEL, &id, nullptr, &dwOptions, &hToken, &info, &pProfile);
    const StandinRecord& record = *m_pStandin->GetRecord(0);
    EXPECT_EQ(id.LowPart, StandinValue(StandinCall::WlxLoggedOutSAS, 2));
    EXPECT_EQ(record.written[2], 0x100000000 | StandinValue(StandinCall::WlxLoggedOutSAS, 2));
    EXPECT_EQ(dwOptions, StandinValue(StandinCall::WlxLoggedOutSAS, 4));
    EXPECT_EQ(hToken, reinterpret_cast<HANDLE>(ULONG_PTR(StandinValue(StandinCall::WlxLoggedOutSAS, 5))));
    EXPECT_EQ(ToNarrow(info.pszPassword), ToNarrow(STANDIN_PASSWORD));
    EXPECT_EQ(ToNarrow(record.szText[6]), "LUM\\standin");
    EXPECT_EQ(record.written[7], reinterpret_cast<ULONG_PTR>(pProfile));
    const auto& profile = *static_cast<PWLX_PROFILE_V1_0>(pProfile);
    EXPECT_EQ(ToNarrow(profile.pszProfile), ToNarrow(STANDIN_PROFILE));
    for (void* pOwned :
         {static_cast<void*>(info.pszUserName), static_cast<void*>(info.pszDomain),
          static_cast<void*>(info.pszPassword), static_cast<void*>(profile.pszProfile), pProfile})
    {
        EXPECT_EQ(LocalFree(pOwned), nullptr);
    }
    STANDIN_ENTRY(WlxLoggedOutSAS)(nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
}

TEST_F(StandinGina, KeepsWithinTheStatusBuffer)
{
    WCHAR szMessage[] = TEXT("########");
    STANDIN_ENTRY(WlxGetStatusMessage)(nullptr, nullptr, szMessage, 4);
    EXPECT_EQ(ToNarrow(szMessage), "The");
    EXPECT_EQ(szMessage[4], WCHAR('#'));
    EXPECT_EQ(ToNarrow(m_pStandin->GetRecord(0)->szText[2]), "The");
    STANDIN_ENTRY(WlxGetStatusMessage)(nullptr, nullptr, szMessage, 0);
    EXPECT_EQ(ToNarrow(szMessage), "The");
}

TEST_F(StandinGina, FailsInTheChosenCallOnlyAndRecordsItFirst)
{
    struct
    {
        StandinFailure failure;
        DWORD dwCode;
    } const rows[] = {
        {StandinFailure::ReadNull, 0xC0000005},     {StandinFailure::DivideByZero, 0xC0000094},
        {StandinFailure::ExhaustStack, 0xC00000FD}, {StandinFailure::Throw, 0xE06D7363},
        {StandinFailure::StructuredException, 42},
    };
    for (const auto& row : rows) {
        if (!m_pStandin->SetFailure(StandinCall::WlxScreenSaverNotify, row.failure, row.dwCode)) {
            EXPECT_EQ(row.failure, StandinFailure::StructuredException);
            continue;
        }
        BOOL bSecure = FALSE;
        DWORD dwCode = 0;
        try {
            CallIntoDLL([&] { STANDIN_ENTRY(WlxScreenSaverNotify)(nullptr, &bSecure); });
        } catch (const CForeignFault& fault) {
            dwCode = fault.GetCode();
        }
        EXPECT_EQ(dwCode, row.dwCode);
        EXPECT_FALSE(bSecure) << "nothing is left behind out-pointers";
        EXPECT_FALSE(m_pStandin->GetRecord(m_pStandin->GetRecordCount() - 1)->bReturned);
        EXPECT_TRUE(STANDIN_ENTRY(WlxIsLockOk)(nullptr)) << "other calls work";
    }
}

/// What a hook saw of the call in which it ran.
struct CSeen
{
    const StandinInterface* pStandin;
    ULONG_PTR context;
    BOOL bReturned;
    DWORD dwRecords;
};

void WINAPI NoteCall(void* pContext, const StandinRecord* pRecord)
{
    auto& seen = *static_cast<CSeen*>(pContext);
    seen = {seen.pStandin, pRecord->argument[0], pRecord->bReturned, seen.pStandin->GetRecordCount()};
}

TEST_F(StandinGina, RunsAHookInsideTheCall)
{
    CSeen seen = {m_pStandin, 0, TRUE, 0};
    m_pStandin->SetHook(StandinCall::WlxLogoff, NoteCall, &seen);
    STANDIN_ENTRY(WlxLogoff)(&seen);
    EXPECT_EQ(seen.context, reinterpret_cast<ULONG_PTR>(&seen));
    EXPECT_FALSE(seen.bReturned);
    EXPECT_EQ(seen.dwRecords, 1u);
    EXPECT_TRUE(m_pStandin->GetRecord(0)->bReturned);
}

TEST(StandinGinaVariants, LackWhatTheirNamesSay)
{
    struct
    {
        const char* szDll;
        std::initializer_list<const char*> lacking;
    } const rows[] = {
        {"msgina.dll", {}},
        {"standin_gina.dll", {}},
        {"standin_gina_no_negotiate.dll", {"WlxNegotiate"}},
        {"standin_gina_no_logoff.dll", {"WlxLogoff"}},
        {"standin_gina_no_optional.dll",
         {"WlxStartApplication", "WlxScreenSaverNotify", "WlxReconnectNotify", "WlxDisconnectNotify"}},
    };
    const char* const names[] = {
#define STANDIN_NAME(NAME, RESULT) #NAME,
        STANDIN_CALLS(STANDIN_NAME)
#undef STANDIN_NAME
    };
    for (const auto& row : rows) {
        CLibrary library;
        library.Load(row.szDll);
        std::size_t nMissing = 0;
        for (const char* szName : names) {
            nMissing += library.FindExport(szName) == nullptr ? 1 : 0;
        }
        EXPECT_EQ(nMissing, row.lacking.size()) << row.szDll;
        for (const char* szName : row.lacking) {
            EXPECT_EQ(library.FindExport(szName), nullptr) << row.szDll << " " << szName;
        }
        EXPECT_NE(library.FindExport("StandinGina"), nullptr) << row.szDll;
    }
}

} // namespace
