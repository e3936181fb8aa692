#pragma once

#include <string>
#include <vector>

#include "Text.h"

namespace Native {

/// The full path of the running program.
std::string GetProgramPath();

/// Where LoadLibraryW looks for a name without a directory.
std::vector<std::string> ListLibraryDirectories();

/// The path of the file that LoadLibraryW loads for a name without a directory; empty when there is none.
std::string FindLibrary(const WideText& name);

/// The same for a name that may have a directory, and is looked for in that one alone if it is not empty.
std::string FindLibraryFile(const WideText& name, const WideText& directory);

} // namespace Native
