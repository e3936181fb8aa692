#pragma once

#include <cstdint>

#include "machine/Text.h"

/// lum_gina.dll in the system directory, as it is after the restart where that replaces it.
namespace LibraryFile {

/// Its version, four fields of 16 bits; 0 when it has none.
std::uint64_t GetVersion();

/// The number of a version that is written "1.0.0.1".
std::uint64_t ParseVersion(const WideText& text);

/// Writes it through to the disk, so that it outlasts a loss of power. Leaves a file that is in use or must
/// not be written: that was there before. Waits 5 seconds at most. Throws CSetupError.
void Flush();

} // namespace LibraryFile
