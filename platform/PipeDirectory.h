#pragma once

#include <string>

#include <windows.h>

namespace Native {

/// Whether the name is one of \\.\pipe\, in any case of its letters.
bool IsPipeName(LPCWSTR szName) noexcept;

/// A directory of this user alone: lum-pipes-UID in XDG_RUNTIME_DIR, TMPDIR or /tmp, whichever is set first.
/// It is made if it is missing. Throws CCallError, with ERROR_ACCESS_DENIED when somebody else could write to
/// the directory.
std::string GetPrivateDirectory();

/// The path of the socket behind a pipe name, in that directory. Throws as GetPrivateDirectory.
std::string GetPipePath(LPCWSTR szName);

} // namespace Native
