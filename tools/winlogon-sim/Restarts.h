#pragma once

#include "DayFile.h"
#include "Options.h"

/// Whether a day needs a process for each start of the machine: it restarts it, or has a call that does not
/// come back.
bool NeedsProcesses(const std::vector<CStep>& steps);

/// Lives each start of the machine in a process of its own, which begins with what the one before has left in
/// the registry, and shows what they show. argv is the command line of this process, and options
/// what it asks for. Returns 0, or the exit
/// status of the first one that did not end as it should. Throws CSetupError.
DWORD LiveStarts(int argc, const char* const* argv, const COptions& options, const std::vector<CStep>& steps);
