#pragma once

#include <vector>

#include "machine/Text.h"

/// Where InspectDll looks when no directory is given, in this order.
std::vector<WideText> ListDllDirectories();
/// Whether Winlogon looks there; natively false.
bool LooksWhereWinlogonLooks();

/// Whether there is such a directory to look in.
bool IsDllDirectory(const WCHAR* szDirectory);
