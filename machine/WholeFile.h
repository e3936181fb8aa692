#pragma once

#include <string>

// Files that are read and written as a whole. Both throw CSetupError.

std::string ReadWholeFile(const std::string& path);

/// Writes a file and reads it back. A file that could not be written completely is not left behind. An
/// existing file is an error unless bReplace.
void WriteWholeFile(const std::string& path, const std::string& bytes, bool bReplace);
