#pragma once

#include "registry/ChainValues.h"

/// Adds the settings that a machine is to have when the library is put into its chain, unless the registry
/// has such a value already, whatever that says. They make no part of the chain. Returns whether there were
/// any to add. bSafeStart: that of safe start, too. Throws CCommandError when one cannot be read.
bool AddRecommendedValues(CChainValues& values, bool bSafeStart);
