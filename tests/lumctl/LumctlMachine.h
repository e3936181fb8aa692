#pragma once

#include "ChainMachine.h"
#include "LumctlRun.h"

/// A machine with GINAs in a folder of its own, on which lumctl is run.
class CLumctlMachine : public CChainMachine
{
protected:
    CLumctlMachine();

    using CRun = CLumctlRun;

    /// Runs a command line, such as "chain show", for GINAs in the folder.
    static CRun Run(const std::string& commandLine);

    /// Makes the folder hold just the DLLs of these GINAs. A name with "=" in front of a DLL of the build is
    /// a copy of that, others are of the stand-in; "=" and nothing is a file that is no DLL.
    static void SetDlls(const std::string& names);
    static const char* const ALL_DLLS;

    static std::string ReadFile(const std::string& path);
    static void WriteFile(const std::string& path, const std::string& bytes);
};
