#pragma once

#include <string>

#include "machine/DllFile.h"

/// Why the host could not use this DLL as a plugin; empty when it could, as far as its file tells.
std::string FindPluginTrouble(const CDllFile& dll);
