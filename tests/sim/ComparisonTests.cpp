#include "Comparison.h"

#include <functional>

#include <gtest/gtest.h>
#include <winwlx.h>

namespace {

/// A call that went as it should: what Winlogon passed and what the GINA recorded of it.
struct CExchange
{
    explicit CExchange(const std::string& line)
        : step(ParseDay("Attach\n" + line, "day").at(1)), frame(step, WLX_VERSION_1_4), record()
    {
        record.call = frame.GetCall().id;
        for (DWORD dwIndex = 0; dwIndex < STANDIN_MAX_ARGUMENTS; ++dwIndex) {
            record.argument[dwIndex] = frame.GetValues()[dwIndex];
            record.szText[dwIndex] =
                frame.GetCall().arguments[dwIndex].bText ? frame.GetText(dwIndex).c_str() : nullptr;
        }
        record.bReturned = TRUE;
        record.nResult = TRUE;
    }

    CStep step;
    CCallFrame frame;
    StandinRecord record;
};

TEST(Comparison, NamesEveryKindOfDifference)
{
    struct
    {
        const char* szStep;
        std::function<void(StandinRecord&)> spoil;
        LONG nResult;
        std::vector<std::string> differences;
    } const rows[] = {
        {"WlxIsLockOk", [](StandinRecord&) {}, TRUE, {}},
        {"WlxIsLockOk", [](StandinRecord& record) { record.nResult = 7; }, TRUE, {}},
        {"WlxIsLockOk", [](StandinRecord&) {}, FALSE, {"the GINA gave TRUE, FALSE came back"}},
        {"WlxWkstaLockedSAS",
         [](StandinRecord& record) { record.nResult = WLX_SAS_ACTION_UNLOCK_WKSTA; },
         WLX_SAS_ACTION_NONE,
         {"the GINA gave UNLOCK_WKSTA, NONE came back"}},
        {"WlxWkstaLockedSAS",
         [](StandinRecord& record) { record.bReturned = FALSE; },
         WLX_SAS_ACTION_NONE,
         {}},
        {"WlxIsLockOk",
         [](StandinRecord& record) { record.bReturned = FALSE; },
         TRUE,
         {"the GINA failed, which means FALSE, TRUE came back"}},
        {"WlxWkstaLockedSAS sas=TIMEOUT",
         [](StandinRecord& record) { record.argument[1] = 5; },
         TRUE,
         {"Winlogon passed sas 0x0, 0x5 reached the GINA"}},
        {"WlxActivateUserShell script=NULL desktop=\"d\"",
         [](StandinRecord& record) { record.szText[1] = TEXT("e"); },
         TRUE,
         {"Winlogon passed desktop \"d\", \"e\" reached the GINA"}},
        {"WlxScreenSaverNotify secure=TRUE",
         [](StandinRecord& record) { record.written[1] = FALSE; },
         TRUE,
         {"the GINA gave secure FALSE, TRUE came back"}},
        {"WlxGetStatusMessage",
         [](StandinRecord& record) { record.szText[2] = TEXT("busy"); },
         TRUE,
         {"the GINA gave message \"busy\", \"\" came back"}},
        // What a plugin changes, as the day expects or not.
        {"WlxWkstaLockedSAS sas=TIMEOUT reaches sas=5",
         [](StandinRecord& record) { record.argument[1] = 5; },
         TRUE,
         {}},
        {"WlxWkstaLockedSAS sas=TIMEOUT reaches sas=5",
         [](StandinRecord&) {},
         TRUE,
         {"the day expects sas 0x5, 0x0 reached the GINA"}},
        {"WlxActivateUserShell desktop=\"d\" reaches desktop=\"e\"",
         [](StandinRecord& record) {
             record.szText[1] = TEXT("e");
             record.argument[1] = 1;
         },
         TRUE,
         {}},
        {"WlxActivateUserShell desktop=\"d\" reaches desktop=\"e\"",
         [](StandinRecord&) {},
         TRUE,
         {"the day expects desktop \"e\", \"d\" reached the GINA"}},
        {"WlxGetStatusMessage gives message=\"\"",
         [](StandinRecord& record) { record.szText[2] = TEXT("busy"); },
         TRUE,
         {}},
        {"WlxScreenSaverNotify secure=TRUE gives secure=FALSE",
         [](StandinRecord& record) { record.written[1] = TRUE; },
         TRUE,
         {"the day expects secure FALSE, TRUE came back"}},
    };
    for (const auto& row : rows) {
        CExchange exchange(row.szStep);
        row.spoil(exchange.record);
        EXPECT_EQ(Compare(exchange.frame, exchange.record, row.nResult), row.differences) << row.szStep;
    }
}

TEST(Comparison, TakesVersionsAboveTheHighestForTheHighest)
{
    CExchange exchange("WlxNegotiate");
    auto* pdwVersion = reinterpret_cast<PDWORD>(exchange.frame.GetValues()[1]);
    *pdwVersion = WLX_VERSION_1_4;
    exchange.record.written[1] = WLX_VERSION_1_4 + 1;
    EXPECT_TRUE(Compare(exchange.frame, exchange.record, TRUE).empty());
    *pdwVersion = WLX_VERSION_1_3;
    EXPECT_FALSE(Compare(exchange.frame, exchange.record, TRUE).empty());
}

TEST(Comparison, DescribesArgumentsInWords)
{
    CExchange exchange("WlxDisplayStatusMessage title=\"T\" message=NULL options=NOANIMATION");
    exchange.record.szText[4] = nullptr;
    EXPECT_EQ(DescribeReached(exchange.frame, exchange.record),
              "context, desktop, options NOANIMATION, title \"T\", message NULL");
    EXPECT_EQ(DescribeCameBack(exchange.frame, FALSE), "FALSE");
    const CExchange locked("WlxWkstaLockedSAS sas=77");
    EXPECT_EQ(DescribeReached(locked.frame, locked.record), "context, sas 77");
    EXPECT_EQ(DescribeCameBack(locked.frame, 99), "99");
}

} // namespace
