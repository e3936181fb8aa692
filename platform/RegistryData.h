#pragma once

#include <vector>

#include <windows.h>

namespace Platform {

/// What is stored under a name: any bytes with any type.
struct CRegistryData
{
    DWORD dwType;
    std::vector<BYTE> bytes;

    bool operator==(const CRegistryData&) const = default;
};

} // namespace Platform
