#pragma once

#include <string>

#include <windows.h>

/// Size and time of the file that LoadLibraryW would load for this name, as a text that differs whenever one
/// of them does; empty when there is no such file. Throws std::bad_alloc.
std::basic_string<WCHAR> GetDllStamp(const WCHAR* szDll);
