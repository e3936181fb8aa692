#include "Command.h"
#include "chain/ChainCommands.h"
#include "online/GinaCommands.h"
#include "online/OnlineCommands.h"
#include "plugins/PluginCommands.h"

namespace {

const std::span<const CCommand> GROUPS[] = {
    CHAIN_COMMANDS,
    ONLINE_COMMANDS,
    GINA_COMMANDS,
    PLUGIN_COMMANDS,
};

} // namespace

const std::span<const std::span<const CCommand>> COMMAND_GROUPS = GROUPS;
