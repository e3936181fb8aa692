#pragma once

#include <map>
#include <optional>
#include <vector>

#include <windows.h>

#include "machine/Text.h"

/// A value as the registry has it.
struct CKeyTreeValue
{
    DWORD dwType = REG_NONE;
    std::vector<BYTE> data;

    bool operator==(const CKeyTreeValue&) const = default;
};

/// A key with all below it, but for volatile notes: a subkey that is named Volatile is left out of a tree and
/// left alone where a tree is written.
struct CKeyTree
{
    std::map<WideText, CKeyTreeValue> values;
    std::map<WideText, CKeyTree> keys;
};

/// Reads a key below HKEY_LOCAL_MACHINE; empty when there is none. Throws CSetupError.
std::optional<CKeyTree> ReadKeyTree(const WideText& path);

/// Makes a key below HKEY_LOCAL_MACHINE what the tree says, and deletes it for an empty one, unless it has
/// volatile notes. Throws CSetupError.
void WriteKeyTree(const WideText& path, const std::optional<CKeyTree>& tree);

/// Deletes a key below HKEY_LOCAL_MACHINE if it has neither values nor subkeys.
void DeleteEmptyKey(const WideText& path);
