#pragma once

#include "Command.h"

/// The changes of the chain of GINAs that the host in service makes.
extern const std::span<const CCommand> GINA_COMMANDS;
