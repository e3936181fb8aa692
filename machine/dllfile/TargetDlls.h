#pragma once

#include <string>
#include <vector>

#include "machine/Text.h"

// What differs between the targets when they look at DLLs, beside what machine/DllDirectories.h declares.

namespace TargetDlls {

/// The path of the file that stands for a complete name; empty when there is none.
WideText Find(const WideText& name, const WideText& directory);

/// What a DLL exports, and the DLLs from which it imports and which must be there.
struct CNames
{
    std::vector<std::string> exports;
    std::vector<std::string> imports;
};

/// Throws CBadImage when the bytes are no whole DLL of this system, nor natively one of 32-bit Windows.
CNames ListNames(const std::string& bytes);

} // namespace TargetDlls
