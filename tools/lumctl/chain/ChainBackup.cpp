#include "ChainBackup.h"

#include <algorithm>

#include "CommandError.h"
#include "GinaNames.h"
#include "Message.h"

namespace {

using Platform::CRegFileChange;

WideText PathOf(const CRegFileChange& change)
{
    WideText path;
    for (const WideText& name : change.key) {
        path += (path.empty() ? TEXT("") : TEXT("\\")) + name;
    }
    return path;
}

std::vector<CRegFileChange> Parse(const std::string& bytes)
{
    try {
        return Platform::ParseRegFile(bytes);
    } catch (const Platform::CRegFileError& error) {
        throw CCommandError("the file cannot be read: " + error.text);
    }
}

/// Chaining records come first: they tell which other values belong to a chain.
void LearnRecords(COfflineChain& chain, const std::vector<CRegFileChange>& changes)
{
    for (const CRegFileChange& change : changes) {
        const bool bRecord = change.value && change.data && EqualNames(PathOf(change).c_str(), LUM_GINA_MTM);
        if (bRecord) {
            chain.Learn(*change.value, TextOf(change.data));
        }
    }
}

[[noreturn]] void Refuse(const CValuePlace& place, const char* szWhy)
{
    throw CCommandError("the file is no backup of a chain: " +
                        (place.name.empty() ? DescribeKey(place) : Describe(place)) + " " + szWhy);
}

void CheckKey(const CChainValues& values, const CRegFileChange& change)
{
    const WideText path = PathOf(change);
    if (change.bDelete) {
        Refuse({path, WideText()}, "is to be deleted");
    }
    const bool bUsed = std::any_of(values.begin(), values.end(), [&](const CChainValue& value) {
        return EqualNames(value.place.key.c_str(), path.c_str());
    });
    if (!bUsed) {
        Refuse({path, WideText()}, "holds nothing of a chain");
    }
}

} // namespace

std::string WriteBackup(const CChainValues& values, const std::vector<CValuePlace>& order)
{
    Platform::CRegFileWriter file;
    WideText key;
    bool bGood = true;
    for (const CValuePlace& place : order) {
        if (place.key != key) {
            key = place.key;
            bGood = file.AddKey(key) && bGood;
        }
        const CValueData& data = values.Find(place)->data;
        bGood = file.AddValue(place.name, data ? &*data : nullptr) && bGood;
    }
    if (!bGood) {
        throw CCommandError(
            "a name in the chain has a control character, for which .reg files have no place");
    }
    return file.GetBytes();
}

CChainValues ReadBackup(COfflineChain& chain, const std::string& bytes)
{
    const std::vector<CRegFileChange> changes = Parse(bytes);
    LearnRecords(chain, changes);
    const CChainValues known = chain.ReadValues();
    CChainValues values;
    for (const CRegFileChange& change : changes) {
        if (!change.value) {
            CheckKey(known, change);
            continue;
        }
        const CValuePlace place = {PathOf(change), *change.value};
        if (known.Find(place) == nullptr) {
            Refuse(place, "is no value of a chain");
        }
        values.Set(place, change.data);
    }
    if (values.Find(WinlogonPlace()) == nullptr) {
        throw CCommandError("the file is no backup of a chain: it does not say which GINA Winlogon loads");
    }
    return values;
}
