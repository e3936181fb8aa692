#pragma once

#include <vector>

#include "Finding.h"
#include "machine/Text.h"

/// Adds what is wrong with the host's own settings, as far as the next start suffers: plugins that it could
/// not load, and values of a wrong type. system: where DLLs are looked for, see InspectDll.
void AddOwnFindings(const WideText& system, Moment moment, std::vector<CFinding>& findings);
