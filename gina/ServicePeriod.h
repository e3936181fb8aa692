#pragma once

#include <windows.h>

class CLUMRegistry;

/// How long a service thread waits from one look at its work to the next, in milliseconds. pfnGet reads the
/// setting, in seconds, from the registry if bRefresh says so, and may throw; without one, and for 0, it is
/// five seconds.
DWORD GetServicePeriod(CLUMRegistry& registry, bool (CLUMRegistry::*pfnGet)(DWORD*, bool),
                       bool bRefresh) noexcept;
