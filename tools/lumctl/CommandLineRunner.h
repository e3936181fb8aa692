#pragma once

#include "Command.h"

/// Finds the command that a command line names, and carries it out. bIsChange: becomes true when the command
/// is going to change something. Throws CUsageError, and what the command throws.
ExitStatus RunCommandLine(int argc, const char* const* argv, std::string& output, bool& bIsChange);
