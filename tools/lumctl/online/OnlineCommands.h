#pragma once

#include "Command.h"

/// What is asked of, and done to, the host in service.
extern const std::span<const CCommand> ONLINE_COMMANDS;
