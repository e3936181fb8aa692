#pragma once

#include "Command.h"

/// Finds the command of a command line and does it. bIsChange: whether it is there to change something.
/// Throws CUsageError, and what the command throws.
ExitStatus RunCommandLine(int argc, const char* const* argv, std::string& output, bool& bIsChange);
