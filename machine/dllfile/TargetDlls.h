#pragma once

#include <optional>
#include <string>
#include <vector>

#include <windows.h>

// What differs between the targets when they look at DLLs.

namespace TargetDlls {

/// The path of the file that stands for a complete name; empty when there is none.
std::basic_string<WCHAR> Find(const std::basic_string<WCHAR>& name,
                              const std::basic_string<WCHAR>& directory);

/// See the function of this name in DllFile.h.
std::optional<std::basic_string<WCHAR>> FindAfterRestart(const std::basic_string<WCHAR>& path);

/// Where Find looks for a name without a directory, if none is given.
std::vector<std::basic_string<WCHAR>> ListDirectories();
/// Whether Winlogon of a machine with this registry looks there.
bool LooksWhereWinlogonLooks();

bool IsDirectory(const std::basic_string<WCHAR>& path);

/// What a DLL exports, and the DLLs from which it imports and which must be there.
struct CNames
{
    std::vector<std::string> exports;
    std::vector<std::string> imports;
};

/// Throws CBadImage when the bytes are no whole DLL of this system, nor natively one of 32-bit Windows.
CNames ListNames(const std::string& bytes);

} // namespace TargetDlls
