#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <windows.h>

// What a process has of the system.

/// Its open handles; natively its open files.
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

/// The bytes of its memory that it shares with nobody.
inline std::size_t CountPrivateBytes()
{
    std::size_t cb = 0;
#ifdef _WIN32
    MEMORY_BASIC_INFORMATION region;
    for (const BYTE* p = nullptr; VirtualQuery(p, &region, sizeof(region)) != 0; p += region.RegionSize) {
        cb += region.State == MEM_COMMIT && region.Type == MEM_PRIVATE ? region.RegionSize : 0;
    }
#else
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "RssAnon:") {
            status >> cb;
        }
    }
    cb *= 1024;
#endif
    return cb;
}
