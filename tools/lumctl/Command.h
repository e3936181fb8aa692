#pragma once

#include <span>
#include <string>
#include <vector>

#include "ExitStatus.h"

// The options that commands may have, each a bit of CCommand::options.
inline constexpr unsigned OPTION_JSON = 0x01;
inline constexpr unsigned OPTION_DRY_RUN = 0x02;
inline constexpr unsigned OPTION_FORCE = 0x04;
inline constexpr unsigned OPTION_SYSTEM = 0x08;
inline constexpr unsigned OPTION_REGISTRY = 0x10;
inline constexpr unsigned OPTION_NOW = 0x20;
inline constexpr unsigned OPTION_TIMEOUT = 0x40;
inline constexpr unsigned OPTION_IN_SERVICE = 0x80;

inline constexpr unsigned OPTION_HIVE = 0x100;
inline constexpr unsigned OPTION_CHECK = 0x200;
inline constexpr unsigned OPTION_NO_SAFE_START = 0x400;
inline constexpr unsigned OPTION_MACHINE = 0x800;

/// Beside them: what counts of the command is what it changes, and not what it has to say.
inline constexpr unsigned IS_CHANGE = 0x1000;

/// The arguments and options of a command.
struct CArguments
{
    /// What follows the command's name, as many as it takes.
    std::vector<std::string> words;
    bool bJson = false;
    bool bDryRun = false;
    bool bForce = false;
    bool bInService = false;
    bool bNow = false;
    bool bCheck = false;
    bool bNoSafeStart = false;
    /// Empty for the system's own.
    std::string system;
    /// The .reg file that is the machine's registry; empty for the system's own registry.
    std::string registry;
    std::string hive;
    /// The machine whose host is asked; empty for this one.
    std::string machine;
    /// As it was given; empty for the default.
    std::string timeout;
};

/// Carries out a command. Appends text to output, which is printed even when the command throws. Throws
/// CCommandError and CSetupError.
using CommandFunction = ExitStatus(const CArguments& arguments, std::string& output);

/// One command of the table.
struct CCommand
{
    const char* szName; ///< one word or two
    /// Names of what follows, as the help shows them; one in brackets may be left out.
    const char* szArguments;
    const char* szHelp;
    unsigned options; ///< and IS_CHANGE
    CommandFunction* pfnRun;
};

/// All commands, by groups. Another group is one line in CommandTable.cpp.
extern const std::span<const std::span<const CCommand>> COMMAND_GROUPS;
