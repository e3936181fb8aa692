#include "Command.h"
#include "chain/ChainCommands.h"

namespace {

const std::span<const CCommand> GROUPS[] = {
    CHAIN_COMMANDS,
};

} // namespace

const std::span<const std::span<const CCommand>> COMMAND_GROUPS = GROUPS;
