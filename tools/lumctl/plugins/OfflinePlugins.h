#pragma once

#include "Command.h"
#include "registry/ValueChange.h"

// What is to be written for a change of the plugins in a machine's registry, which the next start of its host
// follows. Nothing when all is so already. The plugin is the first word of the arguments. Each throws
// CUsageError and CCommandError when the change is refused.

std::optional<CValueChange> PlanAdd(const CArguments& arguments);
std::optional<CValueChange> PlanRemove(const CArguments& arguments);
std::optional<CValueChange> PlanUp(const CArguments& arguments);
std::optional<CValueChange> PlanDown(const CArguments& arguments);
std::optional<CValueChange> PlanRetry(const CArguments& arguments);

/// Throws CUsageError when no entry of the configuration can have this name. The second: when none should get
/// it. An entry that somebody else made may have it.
void CheckName(const std::string& name);
void CheckNewName(const std::string& name);

/// Whether the registry has a plugin of this name. Throws CCommandError when its list cannot be understood.
bool IsConfigured(const WideText& plugin);
