#pragma once

#include <string>

#include "machine/Text.h"

/// Why the host could not use the plugin; empty when it could, as far as its file tells. system: where DLLs
/// are looked for, see InspectDll.
std::string FindPluginTrouble(const WideText& plugin, const WideText& system);
