#pragma once

#include "ChainChange.h"
#include "OfflineMachine.h"

// What is to be written for a change of a machine's chain. Nothing is written. Each throws CCommandError when
// the change cannot be made, or when that cannot be told, after it has printed what is wrong with the chain.

/// Puts the library first; nothing when it is in the chain already.
std::optional<CChainChange> PlanEnable(COfflineMachine& machine, std::string& output);

/// Takes the library out; nothing when it is not in the chain.
std::optional<CChainChange> PlanDisable(COfflineMachine& machine, std::string& output);

/// Takes a GINA out, which must be in the chain.
CChainChange PlanRemove(COfflineMachine& machine, const std::string& name, std::string& output);
