#pragma once

#include <string>
#include <vector>

#include "ExitStatus.h"

/// What a run of lumctl came to.
struct CLumctlRun
{
    ExitStatus status;
    std::string output;
    std::string error; ///< empty when there was none
};

/// Runs a command line in this process, such as "lumctl", "chain", "show".
CLumctlRun RunLumctl(const std::vector<std::string>& words);
