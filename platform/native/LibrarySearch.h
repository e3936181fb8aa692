#pragma once

#include <string>

#include "Text.h"

namespace Native {

/// The full path of the running program.
std::string GetProgramPath();

/// The path of the file that LoadLibraryW loads for a name without a directory; empty when there is none.
std::string FindLibrary(const WideText& name);

} // namespace Native
