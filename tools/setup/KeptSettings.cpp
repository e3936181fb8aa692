#include "KeptSettings.h"

#include "GinaNames.h"
#include "KeyValues.h"
#include "MachineScope.h"
#include "SafeStartNames.h"
#include "machine/MachineLock.h"

namespace {

constexpr WCHAR NOTES[] = L"SOFTWARE\\ORX\\LUM\\Setup";
/// Missing when there was no key of settings.
constexpr WCHAR BEFORE[] = L"SOFTWARE\\ORX\\LUM\\Setup\\Before";
constexpr WCHAR AFTER[] = L"SOFTWARE\\ORX\\LUM\\Setup\\After";
/// A note: there when safe start had notes before.
constexpr WCHAR HAD_START[] = L"HadStart";

/// The library writes these itself: the GINA behind it, and 0 where there is no time limit.
constexpr WCHAR PASSES_TO[] = L"GinaDLL";
constexpr WCHAR TIMEOUT_SECONDS[] = L"Timeout";

CValueData Find(const KeyValues& values, const WideText& name)
{
    const auto found = values.find(name);
    return found != values.end() ? CValueData(found->second) : std::nullopt;
}

void Keep(const WCHAR* szTo, const KeyValues& settings)
{
    MakeSecretKey(szTo);
    for (const auto& [name, data] : settings) {
        WriteValue({szTo, name}, data);
    }
}

/// left: as the installation left them.
void RestoreSettings(const KeyValues& before, KeyValues left, bool bInChain)
{
    const KeyValues settings = ReadKeyValues(LUM_GINA_MTM).value_or(KeyValues());
    // What the library wrote itself counts as the installation's.
    if (const CValueData passesTo = Find(settings, PASSES_TO); passesTo && !bInChain) {
        left[PASSES_TO] = *passesTo;
    }
    left.try_emplace(TIMEOUT_SECONDS, *MakeNumber(0));
    for (const auto& [name, data] : left) {
        if (Find(settings, name) == data && Find(before, name) != data) {
            WriteValue({LUM_GINA_MTM, name}, Find(before, name));
        }
    }
}

void DeleteKeys(std::initializer_list<const WCHAR*> keys)
{
    for (const WCHAR* szKey : keys) {
        DeleteKey(szKey);
    }
}

} // namespace

bool IsAnythingKept()
{
    return ReadKeyValues(NOTES).has_value();
}

void KeepSettings()
{
    const CMachineLock lock(std::string(), SayThatItWaits);
    MakeSecretKey(NOTES);
    if (const std::optional<KeyValues> settings = ReadKeyValues(LUM_GINA_MTM)) {
        Keep(BEFORE, *settings);
    }
    if (ReadKeyValues(START_KEY)) {
        SetNote(HAD_START, MakeNumber(1));
    }
}

void KeepSettingsLeft()
{
    const CMachineLock lock(std::string(), SayThatItWaits);
    Keep(AFTER, ReadKeyValues(LUM_GINA_MTM).value_or(KeyValues()));
}

void TakeSettingsBack(bool bInChain)
{
    const CMachineLock lock(std::string(), SayThatItWaits);
    if (!IsAnythingKept()) {
        return;
    }
    const std::optional<KeyValues> before = ReadKeyValues(BEFORE);
    if (const std::optional<KeyValues> left = ReadKeyValues(AFTER)) {
        RestoreSettings(before.value_or(KeyValues()), *left, bInChain);
        if (!bInChain && !FindNote(HAD_START)) {
            DeleteKeys({LEFT_OUT_KEY, START_KEY});
        }
    }
    // In this order: if it ends in between, nothing more is restored when this is done again.
    DeleteKeys({AFTER, BEFORE, NOTES});
    if (!before) {
        for (const WCHAR* szKey : {LUM_GINA_MTM, L"SOFTWARE\\ORX\\LUM", L"SOFTWARE\\ORX"}) {
            DeleteEmptyKey(szKey);
        }
    }
}

CValueData FindNote(const WCHAR* szName)
{
    return ReadValue({NOTES, szName});
}

void SetNote(const WCHAR* szName, const CValueData& data)
{
    MakeSecretKey(NOTES);
    WriteValue({NOTES, szName}, data);
    FlushKey({NOTES, szName});
}
