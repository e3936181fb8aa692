#pragma once

#include <string_view>

#include <windows.h>

/// Buffers for names and paths have this many characters, the terminating zero included.
inline constexpr DWORD NAME_CAPACITY = 260;
inline constexpr DWORD LONGEST_NAME = NAME_CAPACITY - 1;

/// This system: its DLL, the tag of its messages, and its own key below HKEY_LOCAL_MACHINE, which holds their
/// mask.
inline constexpr WCHAR HOST_GINA[] = TEXT("lum_gina.dll");
inline constexpr WCHAR LUM_GINA_APP[] = TEXT("LUM_GINA");
inline constexpr WCHAR LUM_GINA_MTM[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina");
/// The system's own GINA, which Winlogon loads when none is named.
inline constexpr WCHAR SYSTEM_GINA[] = TEXT("msgina.dll");

/// Winlogon's own key below HKEY_LOCAL_MACHINE, and the value there that names the GINA which it loads.
inline constexpr WCHAR WINLOGON_KEY[] = TEXT("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon");
inline constexpr WCHAR WINLOGON_GINA_DLL[] = TEXT("GinaDLL");

/// Whether two DLL names are equal; letter case does not count. A null name equals nothing.
bool EqualNames(const WCHAR* szLeft, const WCHAR* szRight) noexcept;
bool EqualNames(std::basic_string_view<WCHAR> left, std::basic_string_view<WCHAR> right) noexcept;
