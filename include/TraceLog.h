#pragma once

#include <windows.h>

// The trace log: a plain text file that every message is written to.
//
// A level mask in the registry decides which lines are written. A debug key maps an application tag to the
// file that they go to. Both are read for every message, so a change takes effect at once. There is no lock:
// a line is one write to a file that is opened for that line alone. Nothing here throws; a line that fails is
// not written.

/// Levels, one bit each, so that a mask of them says which messages are written.
inline constexpr DWORD LEVEL_DEBUG = 0x1;
inline constexpr DWORD LEVEL_ENTRY = 0x2;
inline constexpr DWORD LEVEL_EXIT = 0x4;
inline constexpr DWORD LEVEL_NOTIFICATION = 0x8;
inline constexpr DWORD LEVEL_WARNING = 0x10;
inline constexpr DWORD LEVEL_EXCEPTION = 0x20;
inline constexpr DWORD LEVEL_CRITICAL = 0x40;
inline constexpr DWORD LEVEL_ERROR = 0x80;
inline constexpr DWORD LEVEL_CONSTRUCTION_ENTRY = 0x100;
inline constexpr DWORD LEVEL_CONSTRUCTION_EXIT = 0x200;
inline constexpr DWORD LEVEL_DESTRUCTION_ENTRY = 0x400;
inline constexpr DWORD LEVEL_DESTRUCTION_EXIT = 0x800;

/// The mask where none is configured: warnings, exceptions, critical messages and errors.
inline constexpr DWORD DEFAULT_TRACE_MASK = 0xF0;

/// The label of a line of that level; "HEADER" for anything but one level.
const WCHAR* GetLevelLabel(DWORD dwLevel) noexcept;

/// Whether all bits of dwLevel are set in the mask: value "Debug" of HKEY_LOCAL_MACHINE\szMTM,
/// DEFAULT_TRACE_MASK when szMTM is null or empty or the value cannot be read.
bool IsTraceEnabled(DWORD dwLevel, const WCHAR* szMTM) noexcept;

/// Appends one line to the file configured for the tag. True when it was written.
bool WriteLogLine(const WCHAR* szTag, const WCHAR* szLabel, const WCHAR* szText) noexcept;
