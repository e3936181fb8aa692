#include "Command.h"
#include "chain/ChainCommands.h"
#include "online/OnlineCommands.h"

namespace {

const std::span<const CCommand> GROUPS[] = {
    CHAIN_COMMANDS,
    ONLINE_COMMANDS,
};

} // namespace

const std::span<const std::span<const CCommand>> COMMAND_GROUPS = GROUPS;
