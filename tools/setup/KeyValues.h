#pragma once

#include <map>
#include <optional>

#include "registry/ChainValues.h"

// Keys below HKEY_LOCAL_MACHINE as a whole. These throw CSetupError.

struct CLessName
{
    /// Letter case does not count.
    bool operator()(const WideText& left, const WideText& right) const;
};

/// The values of a key, by name, without its subkeys.
using KeyValues = std::map<WideText, Platform::CRegistryData, CLessName>;

/// Nothing when there is no such key.
std::optional<KeyValues> ReadKeyValues(const WideText& path);

/// Makes a key for SYSTEM and administrators alone. One that is there already stays as it is.
void MakeSecretKey(const WideText& path);

/// Deletes a key if it has neither values nor subkeys.
void DeleteEmptyKey(const WideText& path);

/// Deletes a key with its values. Does nothing when it cannot, as with one that has subkeys.
void DeleteKey(const WideText& path);
