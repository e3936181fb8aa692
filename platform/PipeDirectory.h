#pragma once

#include <string>

#include <windows.h>

namespace Native {

/// Whether the name is one of \\.\pipe\, in any case of its letters.
bool IsPipeName(LPCWSTR szName) noexcept;

/// The path of the socket behind a pipe name. It lies in a directory of this user alone: lum-pipes-UID in
/// XDG_RUNTIME_DIR, TMPDIR or /tmp, whichever is set first. A missing directory is made. Throws CCallError,
/// with ERROR_ACCESS_DENIED when somebody else could write to the directory.
std::string GetPipePath(LPCWSTR szName);

} // namespace Native
