#pragma once

#include <string>
#include <vector>

#include <windows.h>

// What differs between the targets when they look at DLLs.

namespace TargetDlls {

/// The path of the file that stands for a complete name; empty when there is none.
std::basic_string<WCHAR> Find(const std::basic_string<WCHAR>& name,
                              const std::basic_string<WCHAR>& directory);

bool IsDirectory(const std::basic_string<WCHAR>& path);

/// The exports of a DLL of this system, natively also of one of 32-bit Windows. Throws CBadImage for other
/// bytes.
std::vector<std::string> ListExports(const std::string& bytes);

} // namespace TargetDlls
