#pragma once

#include <string>

#include <windows.h>

/// The registry of the native platform as a whole, for tools and tests. It belongs to the process; all DLLs
/// and threads share it.
///
/// Windows has a registry of its own: there every operation but Import returns ERROR_CALL_NOT_IMPLEMENTED and
/// does nothing. Any thread may use all operations; others see each happen at once.
namespace MachineRegistry {

/// Adds the contents of a .reg file: text with the heading "Windows Registry Editor Version 5.00" in UTF-16
/// or UTF-8, or with the heading "REGEDIT4". Keys and values that the file deletes are deleted. New keys
/// are not volatile, except below volatile ones.
///
/// Either all of the file is done or nothing: ERROR_BADDB when it is not such a file, otherwise why it could
/// not be read. *pReason, if wanted, then tells what is wrong and in which line.
LONG Load(const WCHAR* szFile, std::string* pReason = nullptr);

/// Adds the contents of a .reg file to the registry that programs see. Natively this is Load. On Windows the
/// system's own editor does it; the editor must be there, and skips what it does not understand. ERROR_BADDB
/// when it says that it failed.
LONG Import(const WCHAR* szFile, std::string* pReason = nullptr);

/// Writes everything that is not volatile, what was loaded of other roots included, as the system's own
/// editor exports it. An existing file is replaced only by a complete new one. ERROR_INVALID_NAME, and no
/// file, when a name contains a control character, for which the format has no place.
LONG Save(const WCHAR* szFile);

/// From now on RegFlushKey saves there. A program that ends before it has saved leaves what was flushed, as
/// on a machine that loses its power. To be asked before other threads run.
LONG KeepIn(const WCHAR* szFile);

/// Deletes everything. Handles that are open stay open on deleted keys.
LONG Clear();

/// What a restart of the machine does: deletes the volatile keys.
LONG ForgetVolatile();

} // namespace MachineRegistry
