#pragma once

#include <windows.h>

/// Where the native platform looks for DLLs. Windows knows its directories itself; not for use there.
namespace NativeLibraries {

/// Names the directory that plays the system directory, copied; null for none, which is how it starts.
/// DLLs that are loaded stay loaded.
void SetSystemDirectory(LPCWSTR szDirectory);

} // namespace NativeLibraries
