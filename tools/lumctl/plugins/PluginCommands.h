#pragma once

#include "Command.h"

/// The commands on plugins: those of the host in service, and those that a machine's registry has.
extern const std::span<const CCommand> PLUGIN_COMMANDS;
