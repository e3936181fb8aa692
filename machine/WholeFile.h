#pragma once

#include <string>

// Files that are read and written as a whole. Both throw CSetupError.

std::string ReadWholeFile(const std::string& path);

/// Writes a file and reads it back; what could not be written completely is not left behind. A file that
/// exists is an error, unless it may be replaced.
void WriteWholeFile(const std::string& path, const std::string& bytes, bool bReplace);
