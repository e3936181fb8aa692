#pragma once

#include <string>

#include <windows.h>

// Files that are read and written as a whole.

/// Appends what a file holds. ERROR_SUCCESS, or why it cannot be read.
DWORD LoadFile(const std::basic_string<WCHAR>& path, std::string& bytes);

/// Writes a file so that, whatever happens, there is either the old file or the complete new one: the new one
/// is written beside it, flushed and renamed. Natively a link stays a link, and a file keeps its mode.
/// Returns ERROR_SUCCESS or why the file cannot be written: ERROR_FILE_EXISTS when there is one already and
/// bReplace is false, ERROR_NOT_SUPPORTED for a pipe, a device or anything else that is no file.
DWORD StoreFile(const std::basic_string<WCHAR>& path, const std::string& bytes, bool bReplace);

// The same for files of the command line. Both throw CSetupError.

std::string ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, const std::string& bytes, bool bReplace);
