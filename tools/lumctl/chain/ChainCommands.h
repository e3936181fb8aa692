#pragma once

#include "Command.h"

/// The commands on the chain of a machine on which no host runs.
extern const std::span<const CCommand> CHAIN_COMMANDS;
