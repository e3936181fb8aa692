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

/// A library negotiates with its GINA by itself, so the version goes to a place of the library's first.
bool IsLibrarysOwn(const CArgument& argument)
{
    return argument.pOut == &OUT_VERSION;
}

bool IsAlwaysNull(const CArgument& argument)
{
    return !argument.CanBeSet() && argument.given == WinlogonValue::Nothing;
}

bool HasSameText(const CCallFrame& frame, DWORD dwIndex, const StandinRecord& record)
{
    const LPCWSTR szText = record.szText[dwIndex];
    return frame.GetText(dwIndex) == (szText != nullptr ? szText : TEXT(""));
}

/// Winlogon knows no version above 1.4, and a library may cut what a GINA says to that.
COutValue CutVersion(const COutForm& form, COutValue value)
{
    if (&form == &OUT_VERSION) {
        value.number = std::min<std::uint64_t>(value.number, WLX_VERSION_1_4);
    }
    return value;
}

void CompareArguments(const CCallFrame& frame, const StandinRecord& record,
                      std::vector<std::string>& differences)
{
    ForEachArgument(frame, [&](DWORD dwIndex, const CArgument& argument) {
        const ULONG_PTR passed = frame.GetValues()[dwIndex];
        const ULONG_PTR reached = record.argument[dwIndex];
        if (reached != passed && !IsLibrarysOwn(argument)) {
            differences.push_back(std::string("Winlogon passed ") + argument.szName + ' ' +
                                  OUT_POINTER.pfnDescribe({passed, {}}) + ", " +
                                  OUT_POINTER.pfnDescribe({reached, {}}) + " reached the GINA");
        }
        if (argument.bText && !HasSameText(frame, dwIndex, record)) {
            differences.push_back(std::string("Winlogon passed ") + argument.szName + " \"" +
                                  ToNarrow(frame.GetText(dwIndex).c_str()) + "\", " +
                                  DescribeTextArgument(record.szText[dwIndex]) + " reached the GINA");
        }
    });
}

void CompareOutValues(const CCallFrame& frame, const StandinRecord& record,
                      std::vector<std::string>& differences)
{
    ForEachArgument(frame, [&](DWORD dwIndex, const CArgument& argument) {
        if (argument.pOut == nullptr) {
            return;
        }
        const LPCWSTR szText = record.szText[dwIndex];
        const COutValue gave = {record.written[dwIndex], szText != nullptr ? szText : TEXT("")};
        const COutValue cameBack = frame.GetOut(dwIndex);
        if (CutVersion(*argument.pOut, gave) != CutVersion(*argument.pOut, cameBack)) {
            differences.push_back(std::string("the GINA gave ") + argument.szName + ' ' +
                                  argument.pOut->pfnDescribe(gave) + ", " +
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

std::vector<std::string> ComparePluginsResult(const CWlxCall& call, std::optional<LONG> pluginsResult,
                                              LONG nResult)
{
    if (call.result == ResultKind::None || !pluginsResult.has_value() ||
        call.IsSameResult(*pluginsResult, nResult))
    {
        return {};
    }
    const CCodes& codes = call.GetResultCodes();
    return {"the plugins gave " + codes.Describe(*pluginsResult) + ", " + codes.Describe(nResult) +
            " came back"};
}

std::vector<std::string> Compare(const CCallFrame& frame, const StandinRecord& record, LONG nResult,
                                 std::optional<LONG> pluginsResult)
{
    std::vector<std::string> differences;
    if (pluginsResult.has_value()) {
        differences = ComparePluginsResult(frame.GetCall(), pluginsResult, nResult);
    } else {
        CompareResult(frame.GetCall(), record, nResult, differences);
    }
    CompareArguments(frame, record, differences);
    if (record.bReturned) {
        CompareOutValues(frame, record, differences);
    }
    return differences;
}
