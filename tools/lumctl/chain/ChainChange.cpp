#include "ChainChange.h"

#include <algorithm>
#include <functional>

#include "CommandError.h"
#include "JsonWriter.h"

namespace {

const CValueData& DataOf(const CChainValues& values, const CValuePlace& place)
{
    static const CValueData none;
    const CChainValue* pValue = values.Find(place);
    return pValue != nullptr ? pValue->data : none;
}

void PrintWrites(const CChainChange& change, const std::vector<CValuePlace>& places, std::string& output)
{
    std::string key;
    for (const CValuePlace& place : places) {
        if (DescribeKey(place) != key) {
            key = DescribeKey(place);
            output += key + "\n";
        }
        output += "  " + Shown(place.name) + ": " + Describe(DataOf(change.before, place)) + " -> " +
                  Describe(DataOf(change.after, place)) + "\n";
    }
}

void RefuseWhileInService(const CChainChange& change)
{
    if (COfflineChain::IsHostInService()) {
        throw CCommandError(
            change.command +
                ": lum_gina.dll is in service on this machine and takes back what "
                "is changed behind it" +
                (change.onlineCommand.empty() ? std::string() : "; use lumctl " + change.onlineCommand) +
                " (--in-service writes all the same)",
            STATUS_REFUSED);
    }
}

void RefuseDanger(const CChainChange& change, const std::vector<CFinding>& findings)
{
    for (const CFinding& finding : findings) {
        if (finding.severity == Severity::Danger) {
            throw CCommandError(change.command + ": the machine would not come up: " + finding.text +
                                    ". Nothing was written (--force writes all the same)",
                                STATUS_REFUSED);
        }
    }
}

/// Returns why the action failed; empty when it did not.
std::string Try(const std::function<void()>& action)
{
    try {
        action();
        return std::string();
    } catch (const std::exception& error) {
        return error.what();
    }
}

/// Writes values in turn until one cannot be written. Returns why it could not; empty when all were written.
/// Adds to written each place that was.
std::string WriteValues(const CChainValues& values, const std::vector<CValuePlace>& places,
                        std::vector<CValuePlace>& written)
{
    return Try([&] {
        for (const CValuePlace& place : places) {
            WriteValue(place, DataOf(values, place));
            written.push_back(place);
        }
    });
}

/// Names each value that is not as it should be; empty when all are.
std::string FindUnwritten(const CChainValues& values, const std::vector<CValuePlace>& places)
{
    std::string text;
    for (const CValuePlace& place : places) {
        const std::string trouble = Try([&] {
            if (const CValueData data = ReadValue(place); data != DataOf(values, place)) {
                throw CCommandError(Describe(place) + " is " + Describe(data) + " and not " +
                                    Describe(DataOf(values, place)));
            }
        });
        text += (text.empty() || trouble.empty() ? "" : "; ") + trouble;
    }
    return text;
}

/// Puts back what was there before the change. written: the places that the change has written.
[[noreturn]] void TakeBack(COfflineChain& chain, const CChainChange& change,
                           const std::vector<CValuePlace>& written, const std::string& trouble)
{
    std::vector<CValuePlace> places = SafeOrder(chain, change.after, change.before);
    std::erase_if(places, [&](const CValuePlace& place) {
        return std::find(written.begin(), written.end(), place) == written.end();
    });
    std::vector<CValuePlace> back;
    const std::string again = WriteValues(change.before, places, back);
    const std::string unwritten = FindUnwritten(change.before, places);
    if (!unwritten.empty()) {
        throw CCommandError(
            change.command + " is HALF DONE: " + trouble + ". What was there before could not be put back" +
                (again.empty() ? again : " (" + again + ")") + ": " + unwritten + ". See lumctl chain check",
            STATUS_HALF_DONE);
    }
    throw CCommandError(
        change.command + ": " + trouble + ". " +
        (written.empty() ? "Nothing has changed" : "What was there before has been put back"));
}

} // namespace

ExitStatus MakeChange(COfflineChain& chain, const CChainChange& change, const CArguments& arguments,
                      std::string& output)
{
    const WideText system = ToWide(arguments.system);
    const auto find = [&](const CChainValues& values, Moment moment) {
        return CheckChain(FollowChain(chain, values, system), system, moment);
    };
    const std::vector<CFinding> findings = find(change.after, Moment::AfterChange);
    const std::vector<CValuePlace> places = SafeOrder(chain, change.before, change.after);
    PrintWrites(change, places, output);
    PrintFindings(findings, output, Moment::AfterChange);
    // A machine that cannot start now may be mended step by step.
    if (!arguments.bForce && !HasSeverity(find(change.before, Moment::Now), Severity::Danger)) {
        RefuseDanger(change, findings);
    }
    if (!arguments.bInService) {
        RefuseWhileInService(change);
    }
    const ExitStatus status = HasSeverity(findings, Severity::Danger) ? STATUS_BAD : STATUS_DONE;
    if (arguments.bDryRun) {
        output += "Nothing was written (--dry-run).\n";
        return status;
    }
    std::vector<CValuePlace> written;
    std::string trouble = WriteValues(change.after, places, written);
    if (trouble.empty()) {
        trouble = FindUnwritten(change.after, places);
    }
    if (!trouble.empty()) {
        TakeBack(chain, change, written, trouble);
    }
    return status;
}

std::vector<CValuePlace> SafeOrder(COfflineChain& chain, const CChainValues& values)
{
    std::vector<CValuePlace> places;
    const auto add = [&](const CValuePlace& place) {
        if (std::find(places.begin(), places.end(), place) == places.end()) {
            places.push_back(place);
        }
    };
    const CChain followed = chain.Follow(values);
    const std::vector<CChainWrite> writes = ListWrites(followed.ginas);
    for (auto write = writes.rbegin(); write != writes.rend(); ++write) {
        if (const std::optional<CValuePlace> place = chain.PlaceOf(*write); place) {
            add(*place);
        }
    }
    for (const CChainValue& value : values) {
        add(value.place);
    }
    return places;
}

std::vector<CValuePlace> SafeOrder(COfflineChain& chain, const CChainValues& before,
                                   const CChainValues& after)
{
    std::vector<CValuePlace> places = SafeOrder(chain, after);
    std::erase_if(places,
                  [&](const CValuePlace& place) { return DataOf(before, place) == DataOf(after, place); });
    return places;
}
