#pragma once

#include <string>

#include <windows.h>

namespace Native {

/// Whether the name is one of \\.\pipe\, in any case of its letters.
bool IsPipeName(LPCWSTR szName) noexcept;

/// The path of the socket behind a pipe name, in a directory that is this user's alone: lum-pipes-UID in
/// XDG_RUNTIME_DIR, TMPDIR or /tmp, whichever is set first. It is made when it is missing. Throws CCallError,
/// with ERROR_ACCESS_DENIED when somebody else could write to the directory.
std::string GetPipePath(LPCWSTR szName);

} // namespace Native
