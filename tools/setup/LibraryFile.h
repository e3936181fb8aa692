#pragma once

#include <cstdint>

#include "machine/Text.h"

/// lum_gina.dll in the system directory, as it is after the restart where that replaces it.
namespace LibraryFile {

/// Its version, four fields of 16 bits; 0 when it has none.
std::uint64_t GetVersion();

/// The number of a version that is written "1.0.0.1".
std::uint64_t ParseVersion(const WideText& text);

/// Sees that it is on the disk, also if the machine loses power. A file that is in use, or that must not be
/// written, was there before. Throws CSetupError.
void Flush();

} // namespace LibraryFile
