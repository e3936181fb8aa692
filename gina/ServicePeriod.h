#pragma once

#include <windows.h>

class CLUMRegistry;

/// The period of a service thread in milliseconds. pfnGet reads the setting, in seconds, from the registry if
/// bRefresh is set; it may throw. A missing setting and 0 mean five seconds.
DWORD GetServicePeriod(CLUMRegistry& registry, bool (CLUMRegistry::*pfnGet)(DWORD*, bool),
                       bool bRefresh) noexcept;
