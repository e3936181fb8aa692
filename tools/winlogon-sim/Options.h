#pragma once

#include <string>

#include <windows.h>

#include "CommandLine.h"

/// What the command line asks for.
struct COptions
{
    std::string day;
    std::string gina = "lum_gina.dll";
    /// Empty to leave the library's configuration alone.
    std::string standin;
    DWORD dwVersion = 0x00010004;
    /// Empty for no trace log.
    std::string traceLog = "winlogon-sim.log";
    /// All but the polls of the control pipe: their lines could overwrite those of other threads.
    DWORD dwTraceMask = 0xFFE;
    /// Registry settings to begin with; empty for none.
    std::string setup;
    /// Empty: the registry is not saved.
    std::string registry;
    /// Live the day also on a machine that has a chain of its own.
    bool bOnThisMachine = false;
    /// Which start of the machine to live, from 1 on; 0 for all.
    DWORD dwStart = 0;
    bool bHelp = false;
    bool bSteps = false;
};

/// Throws CUsageError.
COptions ParseOptions(int argc, const char* const* argv);

extern const char USAGE[];
