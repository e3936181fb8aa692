#include "ChainChange.h"

#include <algorithm>

#include "CommandError.h"
#include "dll/DllSearch.h"
#include "online/OnlineHost.h"

namespace {

void RefuseWhileInService(const CChainChange& change)
{
    if (const std::string host = DescribeHostInService(); !host.empty()) {
        throw CCommandError(
            change.command + ": " + host + " and takes back what is changed behind it" +
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

} // namespace

bool CheckDanger(COfflineChain& chain, const CChainChange& change, const CArguments& arguments,
                 std::string& output)
{
    const WideText system = ToWide(arguments.system);
    RequireDllSearch(system);
    const auto find = [&](const CChainValues& values, Moment moment) {
        return CheckChain(FollowChain(chain, values, system), system, moment);
    };
    const std::vector<CFinding> findings = find(change.after, Moment::AfterChange);
    PrintFindings(findings, output, Moment::AfterChange);
    PrintDoubt(GetDllSearch(system), output);
    // A machine that cannot start now may be mended step by step.
    if (!arguments.bForce && !HasSeverity(find(change.before, Moment::Now), Severity::Danger)) {
        RefuseDanger(change, findings);
    }
    return HasSeverity(findings, Severity::Danger);
}

ExitStatus MakeChange(COfflineChain& chain, const CChainChange& change, const CArguments& arguments,
                      std::string& output)
{
    const std::vector<CValuePlace> places = SafeOrder(chain, change.before, change.after);
    PrintWrites(change, places, output);
    const ExitStatus status = CheckDanger(chain, change, arguments, output) ? STATUS_BAD : STATUS_DONE;
    if (!arguments.bInService) {
        RefuseWhileInService(change);
    }
    if (arguments.bDryRun) {
        output += "Nothing was written (--dry-run).\n";
        return status;
    }
    WriteChange(change, places, SafeOrder(chain, change.after, change.before));
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
