#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include "machine/Text.h"

/// What can be learned of a DLL by reading its file, or the one that takes its place at the restart. The DLL
/// is not loaded, so none of its code runs.
struct CDllFile
{
    enum class State
    {
        Missing,    ///< there is no such file
        Unreadable, ///< the file cannot be read; dwError says why
        Unusable,   ///< no complete DLL that a program of this system can load, or a DLL that it imports from
                    ///< is missing; natively also a Windows DLL is usable, and its imports count as present
        Leaving,    ///< usable, and gone after the restart
        Usable,
    };

    bool HasExport(const std::string& name) const;

    State state = State::Missing;
    DWORD dwError = ERROR_SUCCESS;
    /// Where it was found; empty when it is missing.
    WideText path;
    /// The names that a usable or leaving DLL exports, sorted by their bytes. Exports without a name are left
    /// out.
    std::vector<std::string> exports;
    /// Why the DLL is unusable: it imports from this DLL, which is missing. Empty when there is another
    /// reason.
    std::string missingImport;
};

/// Looks for the DLL as a program in the system directory, such as Winlogon, would that loads it by this
/// name. A name without a path is looked for in the system directory, the 16-bit system directory and the
/// Windows directory, but not along the PATH; natively where LoadLibraryW looks. szDirectory: look there
/// instead; null or empty for the above. The extension .dll may be left out. Throws std::bad_alloc only.
CDllFile InspectDll(const WCHAR* szName, const WCHAR* szDirectory);

/// The name of the file that is loaded by this name: without a directory, with the extension that the system
/// adds, and without the blanks and dots at its end. A name of nothing but blanks and dots is returned as it
/// is.
WideText LoadedName(const WideText& name);
