#include "KeptSettings.h"

#include "GinaNames.h"
#include "MachineScope.h"
#include "SafeStartNames.h"
#include "machine/MachineLock.h"

namespace {

constexpr WCHAR NOTES[] = L"SOFTWARE\\ORX\\LUM\\Setup";
/// Missing when there was no key of settings.
constexpr WCHAR BEFORE[] = L"SOFTWARE\\ORX\\LUM\\Setup\\Before";
constexpr WCHAR AFTER[] = L"SOFTWARE\\ORX\\LUM\\Setup\\After";

/// The library writes these itself, too, the latter when it is missing.
constexpr WCHAR PASSES_TO[] = L"GinaDLL";
constexpr WCHAR TIMEOUT_SECONDS[] = L"Timeout";

std::optional<CKeyValue> Find(const KeyValues& values, const WideText& name)
{
    const auto found = values.find(name);
    return found != values.end() ? std::optional(found->second) : std::nullopt;
}

void Copy(const WCHAR* szTo)
{
    if (const std::optional<KeyValues> settings = ReadKeyValues(LUM_GINA_MTM)) {
        MakeKey(szTo);
        for (const auto& [name, value] : *settings) {
            WriteKeyValue(szTo, name, value);
        }
    }
}

/// left: as the installation left them.
void TakeBack(const KeyValues& before, KeyValues left, const KeyValues& settings, bool bInChain)
{
    if (bInChain) {
        left.erase(PASSES_TO);
    } else if (const std::optional<CKeyValue> value = Find(settings, PASSES_TO)) {
        left[PASSES_TO] = *value;
    }
    left.try_emplace(TIMEOUT_SECONDS, MakeNumberValue(0));
    for (const auto& [name, value] : left) {
        if (Find(settings, name) == value && Find(before, name) != value) {
            WriteKeyValue(LUM_GINA_MTM, name, Find(before, name));
        }
    }
    DeleteKey(START_KEY);
}

void ForgetAll()
{
    for (const WCHAR* szKey : {BEFORE, AFTER, NOTES}) {
        DeleteKey(szKey);
    }
}

} // namespace

void KeepSettings()
{
    const CMachineLock lock(std::string(), SayThatItWaits);
    MakeKey(NOTES, true);
    Copy(BEFORE);
}

void KeepSettingsLeft()
{
    const CMachineLock lock(std::string(), SayThatItWaits);
    Copy(AFTER);
}

void TakeSettingsBack(bool bInChain)
{
    const CMachineLock lock(std::string(), SayThatItWaits);
    if (!ReadKeyValues(NOTES)) {
        return;
    }
    const std::optional<KeyValues> before = ReadKeyValues(BEFORE);
    const std::optional<KeyValues> left = ReadKeyValues(AFTER);
    const std::optional<KeyValues> settings = ReadKeyValues(LUM_GINA_MTM);
    if (left && settings) {
        TakeBack(before.value_or(KeyValues()), *left, *settings, bInChain);
    }
    ForgetAll();
    if (!before) {
        for (const WCHAR* szKey : {LUM_GINA_MTM, L"SOFTWARE\\ORX\\LUM", L"SOFTWARE\\ORX"}) {
            DeleteEmptyKey(szKey);
        }
    }
}

std::optional<CKeyValue> FindNote(const WideText& name)
{
    return Find(ReadKeyValues(NOTES).value_or(KeyValues()), name);
}

void SetNote(const WideText& name, const std::optional<CKeyValue>& value)
{
    MakeKey(NOTES, true);
    WriteKeyValue(NOTES, name, value);
}
