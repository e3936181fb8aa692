#pragma once

#include "DayFile.h"
#include "ExitCode.h"
#include "Options.h"

/// Lives each start of the machine in a process of its own, which begins with what the one before has left in
/// the registry, and shows what they show. argv is the command line of this process, and options what it asks
/// for. Throws CSetupError.
ExitCode LiveStarts(int argc, const char* const* argv, const COptions& options,
                    const std::vector<std::vector<CStep>>& starts);
