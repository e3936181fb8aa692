#pragma once

#include <string>

#include <windows.h>

#include "Text.h"

namespace Native {

/// The loaded DLLs, with their reference counts. The operations throw CCallError. Any thread may use them,
/// and a DllMain too: like Windows' own loader they let one thread in at a time.
namespace LoadedModules {

/// Loads the file, or takes one more reference to it. The first time its DllMain is called.
HMODULE Load(const std::string& path);

/// The loaded DLL of that file name; null when there is none.
HMODULE Find(const WideText& name);

/// Takes one more reference to a loaded DLL of that file name; null when there is none.
HMODULE LoadAgain(const WideText& name);

/// Releases a reference. With the last one, DllMain is called and the DLL is unloaded.
void Free(HMODULE hModule);

/// Null if the DLL itself has no such export. Those of the libraries that it uses do not count.
void* FindExport(HMODULE hModule, const char* szName);

std::string GetPath(HMODULE hModule);

} // namespace LoadedModules

} // namespace Native
