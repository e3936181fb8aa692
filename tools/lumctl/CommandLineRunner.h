#pragma once

#include "Command.h"

/// Finds the command of a command line and does it. Throws CUsageError, and what the command throws.
ExitStatus RunCommandLine(int argc, const char* const* argv, std::string& output);
