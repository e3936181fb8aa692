#pragma once

#include <string>
#include <vector>

#include "ExitStatus.h"

/// What lumctl made of a command line.
struct CLumctlRun
{
    ExitStatus status;
    std::string output;
    std::string error; ///< empty when there was none
};

/// Runs the words that stand behind the program's name.
CLumctlRun RunLumctl(std::vector<std::string> words);

/// The words of a command line, without quoting.
std::vector<std::string> SplitWords(const std::string& commandLine);
