#pragma once

#include <string_view>

#include <windows.h>

/// The size of a buffer for a name or path, in characters, with the terminating zero.
inline constexpr DWORD NAME_CAPACITY = 260;
inline constexpr DWORD LONGEST_NAME = NAME_CAPACITY - 1;

/// This library: its DLL, the tag of its messages, and its own key below HKEY_LOCAL_MACHINE, which holds
/// their level mask.
inline constexpr WCHAR HOST_GINA[] = TEXT("lum_gina.dll");
inline constexpr WCHAR LUM_GINA_APP[] = TEXT("LUM_GINA");
inline constexpr WCHAR LUM_GINA_MTM[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina");
/// Its subkey of what lasts until the machine restarts.
inline constexpr WCHAR VOLATILE_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Volatile");
inline constexpr WCHAR ENABLED_VALUE[] = TEXT("Enabled");
inline constexpr WCHAR INSTANCE_COUNT_VALUE[] = TEXT("InstanceCount");
/// Windows' own GINA, which Winlogon loads when its GinaDLL value is missing.
inline constexpr WCHAR SYSTEM_GINA[] = TEXT("msgina.dll");

/// Winlogon's key below HKEY_LOCAL_MACHINE, and the value in it that names the GINA to load.
inline constexpr WCHAR WINLOGON_KEY[] = TEXT("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon");
inline constexpr WCHAR WINLOGON_GINA_DLL[] = TEXT("GinaDLL");

/// The source of the host's events in the Windows event log, its key below HKEY_LOCAL_MACHINE, and the value
/// of the own key that switches them on.
inline constexpr WCHAR EVENT_SOURCE[] = TEXT("LUM GINA");
inline constexpr WCHAR EVENT_SOURCE_KEY[] =
    TEXT("SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\LUM GINA");
inline constexpr WCHAR EVENT_LOG_VALUE[] = TEXT("EventLog");

/// Whether two DLL names are equal, ignoring case. A null name equals nothing.
bool EqualNames(const WCHAR* szLeft, const WCHAR* szRight) noexcept;
bool EqualNames(std::basic_string_view<WCHAR> left, std::basic_string_view<WCHAR> right) noexcept;

/// Whether two names are those of the same DLL to the loader, however they are spelled: with a directory, an
/// extension, or white space around them. Short names (8.3) are not looked up.
bool IsSameDll(std::basic_string_view<WCHAR> left, std::basic_string_view<WCHAR> right) noexcept;
