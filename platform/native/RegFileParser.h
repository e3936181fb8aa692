#pragma once

#include <optional>
#include <string>
#include <vector>

#include "RegistryTree.h"

namespace Native {

/// One thing that a .reg file says. Without a value's name it is about the key itself.
struct CRegFileChange
{
    std::vector<WideText> key;
    std::optional<WideText> value;
    /// What the value becomes; nothing when key or value is to be deleted, or the key to be there.
    std::optional<CRegistryData> data;
    bool bDelete = false;
};

/// What is wrong with a .reg file.
struct CRegFileError
{
    std::string text; ///< with the number of the line
};

/// The changes that the bytes of a .reg file stand for, in its order. Throws CRegFileError.
std::vector<CRegFileChange> ParseRegFile(const std::string& bytes);

} // namespace Native
