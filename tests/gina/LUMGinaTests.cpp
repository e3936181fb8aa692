#include <algorithm>
#include <utility>

#include "Exceptions.h"
#include "FailingAllocation.h"
#include "HostMachine.h"

namespace {

constexpr const char* NOTHING_TO_CALL = "[EXCEPTION] There is no plugin or GINA to call. Unable to process "
                                        "function. Returning failure";

class LUMGina : public CHostMachine
{
protected:
    LUMGina() { Make(); }

    void Make() { host = std::make_unique<CLUMGina>(HOST); }
};

TEST_F(LUMGina, NeedsAModuleHandle)
{
    EXPECT_THROW(CLUMGina{nullptr}, CLUMInitializeFailException);
    EXPECT_EQ(1, Count("[CRITICAL] Can't instantiate LUMGina object with null Instance handle. Aborting..."));
}

TEST_F(LUMGina, TellsWinlogonTheVersionOfThePassthroughGina)
{
    struct
    {
        DWORD dwOfGina;
        bool bAccepted;
        DWORD dwTold;
    } const rows[] = {{WLX_VERSION_1_3, true, WLX_VERSION_1_3},
                      {WLX_VERSION_1_4, true, WLX_VERSION_1_4},
                      {0x00010005, true, WLX_VERSION_1_4},
                      {0x00020000, true, WLX_VERSION_1_4},
                      {0, false, 77}};
    for (const auto& row : rows) {
        Make();
        msgina->SetVersion(row.dwOfGina);
        m_dwVersion = 77;
        EXPECT_EQ(row.bAccepted, Negotiate()) << row.dwOfGina;
        EXPECT_EQ(row.dwTold, m_dwVersion);
    }
}

TEST_F(LUMGina, FallsBackToMsgina)
{
    struct
    {
        const WCHAR* szConfigured;
        const char* szUsed;
    } const rows[] = {{TEXT("standin_gina.dll"), "standin_gina.dll"},
                      {TEXT(""), "msgina.dll"},
                      {TEXT("nowhere.dll"), "msgina.dll"},
                      {TEXT("standin_gina_no_logoff.dll"), "msgina.dll"}};
    for (const auto& row : rows) {
        Make();
        SetString(OWN_KEY, TEXT("GinaDLL"), row.szConfigured);
        EXPECT_TRUE(Negotiate());
        EXPECT_EQ(Lines{row.szUsed}, Chain());
    }
    Make();
    SetString(OWN_KEY, TEXT("GinaDLL"), TEXT("standin_gina.dll"));
    gina->SetResult(StandinCall::WlxNegotiate, FALSE);
    EXPECT_TRUE(Negotiate());
    // With msgina.dll refusing too there is nothing left, and the export says so.
    Make();
    msgina->SetResult(StandinCall::WlxNegotiate, FALSE);
    EXPECT_THROW(Negotiate(), CFailedGinaNegotiationsException);
}

TEST_F(LUMGina, InitialisesInOneGo)
{
    SetDword(OWN_KEY, TEXT("Timeout"), 300);
    ASSERT_TRUE(Negotiate());
    ASSERT_TRUE(Initialize());
    EXPECT_EQ(300u, s_dwTimeout);
    EXPECT_EQ(WLX, s_hTold);
    EXPECT_NE(nullptr, m_pContext);
    EXPECT_EQ("1", GetValue(VOLATILE_KEY, TEXT("Enabled")));
    EXPECT_EQ("1", GetValue(VOLATILE_KEY, TEXT("InstanceCount")));
    host->LUMWlxShutdown(CONTEXT, 0);
    EXPECT_EQ("0", GetValue(VOLATILE_KEY, TEXT("Enabled")));
    EXPECT_TRUE(Initialize());
    EXPECT_EQ("2", GetValue(VOLATILE_KEY, TEXT("InstanceCount")));
}

TEST_F(LUMGina, RefusedInitialisation)
{
    EXPECT_FALSE(Initialize());
    EXPECT_EQ(1, Count(NOTHING_TO_CALL));
    EXPECT_EQ(NOT_SET, s_dwTimeout);
    ASSERT_TRUE(Negotiate());
    msgina->SetFailure(StandinCall::WlxInitialize, StandinFailure::ReadNull, 0);
    ClearLog();
    EXPECT_FALSE(Initialize());
    EXPECT_EQ((Lines{"[EXCEPTION] Plugin has generated an unknown exception, Plugin: msgina.dll",
                     "[EXCEPTION] An unhandled exception occurred",
                     "[WARNING] An unhandled exception occurred", FAILED}),
              Log());
    EXPECT_EQ(1u, host->m_pGinaObjectList->m_dwCount);
    msgina->SetFailure(StandinCall::WlxInitialize, StandinFailure::None, 0);
    msgina->SetResult(StandinCall::WlxInitialize, FALSE);
    EXPECT_FALSE(Initialize());
    EXPECT_EQ(0u, host->m_pGinaObjectList->m_dwCount);
    EXPECT_EQ(0u, s_dwTimeout) << "what a first start has configured";
}

TEST_F(LUMGina, DispatchesToTheFirstObject)
{
    Start();
    msgina->SetResult(StandinCall::WlxIsLockOk, 7);
    EXPECT_EQ(1, host->LUMWlxIsLockOk(CONTEXT));
    EXPECT_EQ(WLX_SAS_ACTION_LOGON,
              host->LUMWlxLoggedOutSAS(CONTEXT, 1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    host->LUMWlxLogoff(CONTEXT);
    EXPECT_TRUE(Log().empty());
    EXPECT_EQ((Lines{"WlxIsLockOk", "WlxLoggedOutSAS", "WlxLogoff"}), msgina.Calls());
    msgina->SetResult(StandinCall::WlxIsLockOk, FALSE);
    EXPECT_EQ(FALSE, host->LUMWlxIsLockOk(CONTEXT));
    EXPECT_EQ(2, Count(FAILED));
}

TEST_F(LUMGina, FaultsEndAsTheDefaultResult)
{
    Start();
    msgina->SetFailure(StandinCall::WlxLoggedOnSAS, StandinFailure::DivideByZero, 0);
    EXPECT_EQ(WLX_SAS_ACTION_NONE, host->LUMWlxLoggedOnSAS(CONTEXT, 1, nullptr));
    EXPECT_EQ((Lines{"[EXCEPTION] Plugin has generated an unknown exception, Plugin: msgina.dll", FAILED}),
              Log());
    EXPECT_EQ(TRUE, host->LUMWlxIsLockOk(CONTEXT));
}

TEST_F(LUMGina, AnEmptyListIsTheExportsAffair)
{
    EXPECT_THROW(host->LUMWlxIsLockOk(CONTEXT), CNoGINAorPluginToCallException);
    EXPECT_THROW(host->LUMWlxLogoff(CONTEXT), CNoGINAorPluginToCallException);
    SetDword(VOLATILE_KEY, TEXT("Enabled"), 1);
    EXPECT_THROW(host->LUMWlxShutdown(CONTEXT, 0), CNoGINAorPluginToCallException);
    EXPECT_EQ("0", GetValue(VOLATILE_KEY, TEXT("Enabled")));
    EXPECT_EQ(3, Count(NOTHING_TO_CALL));
}

TEST_F(LUMGina, WhatNeedsAMissingMemberFailsUnlessPeopleCanLogOnWithoutIt)
{
    enum Outcome
    {
        FAILS,
        WARNS, ///< and succeeds all the same
        SUCCEEDS
    };
    const auto without = [this](auto CLUMGina::*pMember, Outcome negotiation, Outcome initialisation,
                                Outcome shutdown) {
        const auto attempt = [&](Outcome outcome, auto operation) {
            auto* const pKept = std::exchange((*host).*pMember, nullptr);
            ClearLog();
            EXPECT_EQ(outcome != FAILS, operation());
            EXPECT_EQ(outcome == SUCCEEDS ? 0 : 1, std::min(1, Count(UNHANDLED)));
            (*host).*pMember = pKept;
        };
        Make();
        attempt(negotiation, [&] { return Negotiate(); });
        Make();
        ASSERT_TRUE(Negotiate());
        SetDword(VOLATILE_KEY, TEXT("InstanceCount"), 0);
        attempt(initialisation, [&] { return Initialize(); });
        attempt(shutdown, [&] {
            host->LUMWlxShutdown(CONTEXT, 0);
            return Count(UNHANDLED) == 0;
        });
    };
    without(&CLUMGina::m_pGinaContext, FAILS, FAILS, SUCCEEDS);
    without(&CLUMGina::m_pLUMRegistry, WARNS, FAILS, FAILS);
    without(&CLUMGina::m_pWinlogonObject, SUCCEEDS, FAILS, SUCCEEDS);
    without(&CLUMGina::m_pLUMObject, SUCCEEDS, SUCCEEDS, SUCCEEDS);
    without(&CLUMGina::m_pLUMPipeThreadObject, SUCCEEDS, WARNS, FAILS);
    without(&CLUMGina::m_pLUMRegMonitorThreadObject, SUCCEEDS, WARNS, FAILS);
}

TEST_F(LUMGina, SurvivesAnyFailedAllocation)
{
    SetTraceMask(0);
    for (int nBefore = 0; nBefore < 60; nBefore += 4) {
        {
            // The first allocation is the host itself.
            const CFailingAllocation noMemory(nBefore + 1);
            host.reset(new CLUMGina(HOST));
        }
        Negotiate();
        Initialize();
        try {
            host->LUMWlxIsLockOk(CONTEXT);
        } catch (const CNoGINAorPluginToCallException&) {
        }
        Make();
        try {
            const CFailingAllocation noMemory(nBefore);
            Negotiate();
        } catch (const CMessage&) {
            EXPECT_EQ(Lines(), Chain());
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(Lines(), Chain());
        }
    }
}

} // namespace
