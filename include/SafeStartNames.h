#pragma once

#include <windows.h>

// The keys below HKEY_LOCAL_MACHINE and the values of safe start, for the host and for lumctl.
// gina/SafeStart.h says what they mean.

inline constexpr WCHAR SAFE_START[] = TEXT("SafeStart");
inline constexpr WCHAR REQUIRED_PLUGINS[] = TEXT("RequiredPlugins");
inline constexpr WCHAR NO_PLUGINS[] = TEXT("NoPlugins");

inline constexpr WCHAR START_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Start");
inline constexpr WCHAR IN_PLUGIN[] = TEXT("InPlugin");
inline constexpr WCHAR IN_PLUGIN_STAMP[] = TEXT("Stamp");
inline constexpr WCHAR IN_PLUGIN_COUNT[] = TEXT("Count");
inline constexpr WCHAR LEFT_OUT_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Start\\LeftOut");
