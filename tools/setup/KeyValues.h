#pragma once

#include <map>
#include <optional>
#include <vector>

#include <windows.h>

#include "machine/Text.h"

/// A value as the registry has it.
struct CKeyValue
{
    DWORD dwType = REG_NONE;
    std::vector<BYTE> data;

    bool operator==(const CKeyValue&) const = default;
};

/// The values of a key, by name, without its subkeys.
using KeyValues = std::map<WideText, CKeyValue>;

/// Keys below HKEY_LOCAL_MACHINE. These throw CSetupError.

/// Empty when there is no such key.
std::optional<KeyValues> ReadKeyValues(const WideText& path);

/// Makes the key if there is none. bSecret: for SYSTEM and administrators alone, which a key that is there
/// already does not become.
void MakeKey(const WideText& path, bool bSecret = false);

/// Writes a value, or deletes it where there is no data. The key must be there.
void WriteKeyValue(const WideText& path, const WideText& name, const std::optional<CKeyValue>& value);

/// Deletes a key if it has neither values nor subkeys.
void DeleteEmptyKey(const WideText& path);

/// Deletes a key with its values, and does nothing to one that has subkeys.
void DeleteKey(const WideText& path);

CKeyValue MakeNumberValue(DWORD dwNumber);
