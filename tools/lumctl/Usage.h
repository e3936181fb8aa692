#pragma once

#include <span>
#include <string>

/// An option as the help shows it.
struct COptionHelp
{
    unsigned nBit; ///< of CCommand::options
    const char* szName;
    const char* szArgument;
    const char* szHelp;
};

extern const std::span<const COptionHelp> OPTION_HELPS;

/// The help text: all commands and options.
std::string GetUsage();
