#pragma once

#include <string>

#include <windows.h>

// Files that are read and written as a whole.

/// Appends what a file holds. ERROR_SUCCESS, or why it cannot be read.
DWORD LoadFile(const std::basic_string<WCHAR>& path, std::string& bytes);

/// Writes a file at one stroke: beside its place, flushed, then renamed, so that whatever happens there is
/// the old file or the new one. A link stays one, and natively the mode of a file stays. ERROR_SUCCESS, or
/// why it cannot be written: ERROR_FILE_EXISTS when there is one that must not be replaced,
/// ERROR_NOT_SUPPORTED for what is no file, such as a pipe or a device.
DWORD StoreFile(const std::basic_string<WCHAR>& path, const std::string& bytes, bool bReplace);

// The same for files of the command line. Both throw CSetupError.

std::string ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, const std::string& bytes, bool bReplace);
