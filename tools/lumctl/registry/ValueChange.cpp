#include "ValueChange.h"

#include <algorithm>
#include <functional>

#include "CommandError.h"

namespace {

/// Does what may fail, and gives why it did.
std::string Try(const std::function<void()>& action)
{
    try {
        action();
        return std::string();
    } catch (const std::exception& error) {
        return error.what();
    }
}

/// Writes values in turn until one cannot be written, and gives why that is. Those written are added to
/// written.
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

/// Names each value that is not as it is to be; empty when all are.
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

/// written: what of the change had been made.
[[noreturn]] void TakeBack(const CValueChange& change, std::vector<CValuePlace> places,
                           const std::vector<CValuePlace>& written, const std::string& trouble)
{
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

const CValueData& DataOf(const CChainValues& values, const CValuePlace& place)
{
    static const CValueData none;
    const CChainValue* pValue = values.Find(place);
    return pValue != nullptr ? pValue->data : none;
}

std::vector<CValuePlace> ListDifferences(const CValueChange& change)
{
    std::vector<CValuePlace> places;
    for (const CChainValue& value : change.after) {
        if (DataOf(change.before, value.place) != value.data) {
            places.push_back(value.place);
        }
    }
    return places;
}

void RequireUnchangedByHost(const CValueChange& found)
{
    std::string text;
    for (const CValuePlace& place : ListDifferences(found)) {
        text += (text.empty() ? "" : "; ") + Describe(place) + " was " +
                Describe(DataOf(found.before, place)) + " and is " + Describe(DataOf(found.after, place));
    }
    if (!text.empty()) {
        throw CCommandError(found.command +
                                " is HALF DONE: the host could not do all of it (its trace log says "
                                "why), and this has changed: " +
                                text,
                            STATUS_HALF_DONE);
    }
}

void PrintWrites(const CValueChange& change, const std::vector<CValuePlace>& places, std::string& output)
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

void WriteChange(const CValueChange& change, const std::vector<CValuePlace>& places,
                 const std::vector<CValuePlace>& back)
{
    std::vector<CValuePlace> written;
    std::string trouble = WriteValues(change.after, places, written);
    if (trouble.empty()) {
        trouble = FindUnwritten(change.after, places);
    }
    if (!trouble.empty()) {
        TakeBack(change, back, written, trouble);
    }
    if (!places.empty()) {
        // All that counts is in one hive.
        FlushKey(places.front());
    }
}
