#include "Comparison.h"

#include <algorithm>

#include <winwlx.h>

namespace {

/// Calls visit(index, argument) for each argument of the call.
template <typename Visit>
void ForEachArgument(const CCallFrame& frame, Visit visit)
{
    for (DWORD dwIndex = 0; dwIndex < STANDIN_MAX_ARGUMENTS; ++dwIndex) {
        const CArgument& argument = frame.GetCall().arguments[dwIndex];
        if (argument.szName != nullptr) {
            visit(dwIndex, argument);
        }
    }
}

void AppendListed(std::string& list, const std::string& item)
{
    list += (list.empty() ? "" : ", ") + item;
}

std::string DescribeTextArgument(LPCWSTR szText)
{
    return szText != nullptr ? '"' + ToNarrow(szText) + '"' : "NULL";
}

/// An argument as it arrived: in words where it is what Winlogon passed or a number that has a word.
std::string DescribeArgument(const CArgument& argument, ULONG_PTR passed, ULONG_PTR reached, LPCWSTR szText)
{
    const std::string name = argument.szName;
    if (argument.bText) {
        return name + ' ' + DescribeTextArgument(szText);
    }
    if (argument.pCodes != nullptr && argument.pOut == nullptr) {
        return name + ' ' + argument.pCodes->Describe(static_cast<DWORD>(reached));
    }
    return reached == passed ? name : name + ' ' + OUT_POINTER.pfnDescribe({reached, {}});
}

/// A library negotiates with its GINA on its own, so the GINA writes the version to the library first.
bool IsLibrarysOwn(const CArgument& argument)
{
    return argument.pOut == &OUT_VERSION;
}

bool IsAlwaysNull(const CArgument& argument)
{
    return !argument.CanBeSet() && argument.given == WinlogonValue::Nothing;
}

/// Winlogon knows no version above 1.4, and a library may cut what a GINA says to that.
COutValue CutVersion(const COutForm& form, COutValue value)
{
    if (&form == &OUT_VERSION) {
        value.number = std::min<std::uint64_t>(value.number, WLX_VERSION_1_4);
    }
    return value;
}

/// A text that a plugin replaces lies somewhere else, so any place will do for it.
void CompareArgument(const CCallFrame& frame, DWORD dwIndex, const StandinRecord& record,
                     std::vector<std::string>& differences)
{
    const CArgument& argument = frame.GetCall().arguments[dwIndex];
    const CArgumentValues& changes = frame.GetStep().reaches;
    const bool bChanged = changes.Has(dwIndex);
    const std::string who = bChanged ? "the day expects " : "Winlogon passed ";
    const ULONG_PTR expected =
        changes.numbers[dwIndex].has_value() ? *changes.numbers[dwIndex] : frame.GetValues()[dwIndex];
    const ULONG_PTR reached = record.argument[dwIndex];
    if (reached != expected && !IsLibrarysOwn(argument) && !changes.texts[dwIndex].has_value()) {
        differences.push_back(who + argument.szName + ' ' + OUT_POINTER.pfnDescribe({expected, {}}) + ", " +
                              OUT_POINTER.pfnDescribe({reached, {}}) + " reached the GINA");
    }
    const WideText text = changes.texts[dwIndex].value_or(frame.GetText(dwIndex)).value_or(WideText());
    const LPCWSTR szReached = record.szText[dwIndex];
    if (argument.bText && text != (szReached != nullptr ? szReached : TEXT(""))) {
        differences.push_back(who + argument.szName + " \"" + ToNarrow(text.c_str()) + "\", " +
                              DescribeTextArgument(szReached) + " reached the GINA");
    }
}

/// What must come back behind an out-pointer: what the GINA gave, or what plugins make of it. A text that
/// they replace may lie anywhere.
COutValue ExpectedOut(const CCallFrame& frame, DWORD dwIndex, COutValue gave)
{
    const CArgumentValues& changes = frame.GetStep().gives;
    if (changes.texts[dwIndex].has_value()) {
        gave = {frame.GetOut(dwIndex).number, changes.texts[dwIndex]->value_or(WideText())};
    }
    gave.number = changes.numbers[dwIndex].has_value() ? *changes.numbers[dwIndex] : gave.number;
    return gave;
}

/// What the GINA gave behind an out-pointer.
COutValue GetGiven(const StandinRecord& record, DWORD dwIndex)
{
    const LPCWSTR szText = record.szText[dwIndex];
    return {record.written[dwIndex], szText != nullptr ? szText : TEXT("")};
}

/// Without a record the GINA was not called, and only what the day expects can be looked at.
void CompareOutValues(const CCallFrame& frame, const StandinRecord* pRecord,
                      std::vector<std::string>& differences)
{
    ForEachArgument(frame, [&](DWORD dwIndex, const CArgument& argument) {
        const bool bExpected = frame.GetStep().gives.Has(dwIndex);
        if (argument.pOut == nullptr || (pRecord == nullptr && !bExpected)) {
            return;
        }
        const COutValue cameBack = frame.GetOut(dwIndex);
        const COutValue expected =
            ExpectedOut(frame, dwIndex, pRecord != nullptr ? GetGiven(*pRecord, dwIndex) : cameBack);
        if (CutVersion(*argument.pOut, expected) != CutVersion(*argument.pOut, cameBack)) {
            differences.push_back((bExpected ? "the day expects " : std::string("the GINA gave ")) +
                                  argument.szName + ' ' + argument.pOut->pfnDescribe(expected) + ", " +
                                  argument.pOut->pfnDescribe(cameBack) + " came back");
        }
    });
}

void CompareResult(const CWlxCall& call, const StandinRecord& record, LONG nResult,
                   std::vector<std::string>& differences)
{
    const LONG nGave = record.bReturned ? record.nResult : call.GetDefaultResult();
    if (call.result == ResultKind::None || call.IsSameResult(nGave, nResult)) {
        return;
    }
    const CCodes& codes = call.GetResultCodes();
    differences.push_back((record.bReturned ? "the GINA gave " : "the GINA failed, which means ") +
                          codes.Describe(nGave) + ", " + codes.Describe(nResult) + " came back");
}

void ComparePluginsResult(const CWlxCall& call, std::optional<LONG> pluginsResult, LONG nResult,
                          std::vector<std::string>& differences)
{
    if (call.result != ResultKind::None && pluginsResult.has_value() &&
        !call.IsSameResult(*pluginsResult, nResult))
    {
        const CCodes& codes = call.GetResultCodes();
        differences.push_back("the plugins gave " + codes.Describe(*pluginsResult) + ", " +
                              codes.Describe(nResult) + " came back");
    }
}

} // namespace

std::string DescribeReached(const CCallFrame& frame, const StandinRecord& record)
{
    std::string text;
    ForEachArgument(frame, [&](DWORD dwIndex, const CArgument& argument) {
        const ULONG_PTR passed = frame.GetValues()[dwIndex];
        const ULONG_PTR reached = record.argument[dwIndex];
        const bool bSaysNothing = argument.pOut != nullptr || IsAlwaysNull(argument);
        if (!bSaysNothing || (reached != passed && !IsLibrarysOwn(argument))) {
            AppendListed(text, DescribeArgument(argument, passed, reached, record.szText[dwIndex]));
        }
    });
    return record.bReturned ? text : text + ": the GINA failed";
}

std::string DescribeCameBack(const CCallFrame& frame, LONG nResult)
{
    const CWlxCall& call = frame.GetCall();
    std::string text = call.result != ResultKind::None ? call.GetResultCodes().Describe(nResult) : "";
    ForEachArgument(frame, [&](DWORD dwIndex, const CArgument& argument) {
        if (argument.pOut != nullptr && (argument.CanBeSet() || !frame.GetOut(dwIndex).IsNothing())) {
            AppendListed(text, argument.szName + (' ' + argument.pOut->pfnDescribe(frame.GetOut(dwIndex))));
        }
    });
    return text;
}

std::vector<std::string> CompareWithoutGina(const CCallFrame& frame, std::optional<LONG> pluginsResult,
                                            LONG nResult)
{
    std::vector<std::string> differences;
    ComparePluginsResult(frame.GetCall(), pluginsResult, nResult, differences);
    CompareOutValues(frame, nullptr, differences);
    ForEachArgument(frame, [&](DWORD dwIndex, const CArgument& argument) {
        if (frame.GetStep().reaches.Has(dwIndex)) {
            differences.push_back(std::string("the day expects that ") + argument.szName +
                                  " reaches the GINA, which was not called");
        }
    });
    return differences;
}

std::vector<std::string> Compare(const CCallFrame& frame, const StandinRecord& record, LONG nResult,
                                 std::optional<LONG> pluginsResult)
{
    std::vector<std::string> differences;
    if (pluginsResult.has_value()) {
        ComparePluginsResult(frame.GetCall(), pluginsResult, nResult, differences);
    } else {
        CompareResult(frame.GetCall(), record, nResult, differences);
    }
    ForEachArgument(frame, [&](DWORD dwIndex, const CArgument&) {
        CompareArgument(frame, dwIndex, record, differences);
    });
    if (record.bReturned) {
        CompareOutValues(frame, &record, differences);
    }
    return differences;
}
