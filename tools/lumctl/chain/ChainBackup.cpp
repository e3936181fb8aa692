#include "ChainBackup.h"

#include <algorithm>

#include "CommandError.h"
#include "GinaNames.h"
#include "Message.h"
#include "chaining/KnownGinas.h"
#include "machine/DllFile.h"

namespace {

using Platform::CRegFileChange;

constexpr char LAST_LINE[] = "This backup is whole.";

WideText PathOf(const CRegFileChange& change)
{
    WideText path;
    for (const WideText& name : change.key) {
        path += (path.empty() ? TEXT("") : TEXT("\\")) + name;
    }
    return path;
}

/// The encoding does not matter: the last line is plain ASCII.
bool IsWhole(std::string bytes)
{
    std::erase(bytes, '\0');
    bytes.erase(bytes.find_last_not_of("\r\n \t") + 1);
    return bytes.ends_with(std::string("; ") + LAST_LINE);
}

std::vector<CRegFileChange> Parse(const std::string& bytes)
{
    try {
        std::vector<CRegFileChange> changes = Platform::ParseRegFile(bytes);
        for (const CRegFileChange& change : changes) {
            if (change.root != Platform::MACHINE_ROOT) {
                throw CCommandError("the file is no backup of a chain: it has keys of " + Shown(change.root));
            }
        }
        if (!IsWhole(bytes)) {
            throw CCommandError(
                Format("the file is no whole backup of a chain: it does not end with \"; %s\"", LAST_LINE));
        }
        return changes;
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

/// Whether a record that only the file has may say where a passthrough value lies. Such a record could name
/// any value of the machine. So the value must be there already and name a known GINA, and it is only made to
/// name another one. Values in Winlogon's key and in the host's own are never reached by a record.
bool IsHarmless(COfflineChain& chain, const CGinaNames& ginas, std::size_t nGina, const CValuePlace& place)
{
    const auto isKnown = [&](const WideText& gina) { return chain.Know(gina.c_str()).has_value(); };
    return nGina + 1 < ginas.size() && isKnown(ginas[nGina + 1]) &&
           isKnown(LoadedName(TextOf(ReadValue(place)))) && !EqualNames(place.key.c_str(), WINLOGON_KEY) &&
           !EqualNames(place.key.substr(0, WideText(LUM_GINA_MTM).size()).c_str(), LUM_GINA_MTM);
}

/// The places of all values of the GINAs in the built-in table and in the chain that the values make.
std::vector<CValuePlace> ListPlaces(COfflineChain& chain, const CChainValues& values)
{
    std::vector<CValuePlace> places = {WinlogonPlace()};
    const auto add = [&](const std::optional<CValuePlace>& place) {
        if (place) {
            places.push_back(*place);
        }
    };
    for (const CKnownGina& known : KNOWN_GINAS) {
        add(PassthroughPlace(known.record));
    }
    const CGinaNames ginas = chain.Follow(values).ginas;
    for (std::size_t nGina = 0; nGina < ginas.size(); ++nGina) {
        const std::optional<CChainingRecord> record = chain.Know(ginas[nGina].c_str());
        // The host's own values have no extension.
        if (!record || FindInTable(ginas[nGina].c_str()) != nullptr ||
            ginas[nGina].find('.') == WideText::npos) {
            continue;
        }
        const CValuePlace recordPlace = RecordPlace(ginas[nGina]);
        const std::optional<CValuePlace> place = PassthroughPlace(*record);
        add(recordPlace);
        if (place &&
            (ReadValue(recordPlace) == Read(values, recordPlace) || IsHarmless(chain, ginas, nGina, *place)))
        {
            add(place);
        }
    }
    return places;
}

void CheckKey(const std::vector<CValuePlace>& places, const CRegFileChange& change)
{
    const WideText path = PathOf(change);
    if (change.bDelete) {
        Refuse({path, WideText()}, "is to be deleted");
    }
    const bool bUsed = std::any_of(places.begin(), places.end(), [&](const CValuePlace& place) {
        return EqualNames(place.key.c_str(), path.c_str());
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
    file.AddComment(ToWide(LAST_LINE));
    return file.GetBytes();
}

CChainValues ReadBackup(COfflineChain& chain, const std::string& bytes)
{
    const std::vector<CRegFileChange> changes = Parse(bytes);
    LearnRecords(chain, changes);
    CChainValues values;
    for (const CRegFileChange& change : changes) {
        const CValuePlace place = {PathOf(change), change.value ? *change.value : WideText()};
        if (change.value && values.Find(place) != nullptr) {
            Refuse(place, "is there twice");
        }
        if (change.value) {
            values.Set(place, change.data);
        }
    }
    if (values.Find(WinlogonPlace()) == nullptr) {
        throw CCommandError("the file is no backup of a chain: it does not say which GINA Winlogon loads");
    }
    const std::vector<CValuePlace> places = ListPlaces(chain, values);
    for (const CRegFileChange& change : changes) {
        if (!change.value) {
            CheckKey(places, change);
        }
    }
    for (const CChainValue& value : values) {
        if (std::find(places.begin(), places.end(), value.place) == places.end()) {
            Refuse(value.place, "is no value of a chain");
        }
    }
    return values;
}
