#pragma once

#include <filesystem>

#include <windows.h>

/// The open handles of this process; natively its open files.
inline DWORD CountHandles()
{
    DWORD dwHandles = 0;
#ifdef _WIN32
    // They are small multiples of four.
    for (ULONG_PTR nHandle = 4; nHandle < 0x2000; nHandle += 4) {
        DWORD dwFlags = 0;
        dwHandles += GetHandleInformation(reinterpret_cast<HANDLE>(nHandle), &dwFlags) != FALSE;
    }
#else
    for ([[maybe_unused]] const auto& file : std::filesystem::directory_iterator("/proc/self/fd")) {
        ++dwHandles;
    }
#endif
    return dwHandles;
}
