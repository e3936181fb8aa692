#pragma once

#include <string>
#include <vector>

#include <windows.h>

/// What a DLL is, found out by reading its file. It is not loaded, so nothing of it runs.
struct CDllFile
{
    enum class State
    {
        Missing,    ///< there is no such file
        Unreadable, ///< the file cannot be read; dwError says why
        Unusable,   ///< it is no whole DLL that a program of this system could load, or one that it imports
                    ///< from is not there; natively it may be one of Windows, whose imports count as there
        Usable,
    };

    bool HasExport(const std::string& name) const;

    State state = State::Missing;
    DWORD dwError = ERROR_SUCCESS;
    /// Where it was found; empty when it is missing.
    std::basic_string<WCHAR> path;
    /// The names that a usable one exports, in the order of their bytes. What it exports without a name is
    /// not among them.
    std::vector<std::string> exports;
    /// The DLL that an unusable one imports from and that is not there; empty when that is not the reason.
    std::string missingImport;
};

/// Looks for the DLL as a program in the system directory, such as Winlogon, would that loads it by this
/// name. A name without a path is looked for in the system directory, the 16-bit system directory and the
/// Windows directory, but not along the PATH; natively where LoadLibraryW looks. szDirectory: look there
/// instead; null or empty for the above. The extension .dll may be left out. Throws std::bad_alloc only.
CDllFile InspectDll(const WCHAR* szName, const WCHAR* szDirectory);

/// What the file is called that is loaded by this name: without a directory, with the extension that the
/// system adds, and without the blanks and dots at the end that it takes away. Nothing but blanks stays.
std::basic_string<WCHAR> LoadedName(const std::basic_string<WCHAR>& name);

/// Whether there is such a directory to look in.
bool IsDllDirectory(const WCHAR* szDirectory);
