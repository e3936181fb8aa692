#pragma once

#include <windows.h>

/// Each DLL of the loader's tests has a key of its name below this one. There it finds the DWORD "Behaviour"
/// and the text "Load", the name of a DLL to load while it attaches. There it counts "Attached" and
/// "Detached", and leaves 1 in "Loaded" if the other DLL came.
#define LOADER_TEST_KEY TEXT("SOFTWARE\\ORX\\LoaderTest")

inline constexpr DWORD LOADER_TEST_ACCEPT = 0;
inline constexpr DWORD LOADER_TEST_REFUSE = 1; ///< DllMain answers FALSE
inline constexpr DWORD LOADER_TEST_FAULT = 2;  ///< DllMain writes where no memory is

/// The export "GetOwnInstance": what DllMain was given.
using GetOwnInstanceFunction = HINSTANCE(WINAPI*)();
