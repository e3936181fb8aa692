#pragma once

#include "OfflineChain.h"

/// The bytes of a .reg file that says in this order what these values are, and of which there is none that it
/// is deleted.
std::string WriteBackup(const CChainValues& values, const std::vector<CValuePlace>& order);

/// The values that a .reg file says. Chaining records in it are added to what is known. Throws CCommandError
/// when it is no .reg file, says anything that is no value of a chain, or does not say what Winlogon loads.
CChainValues ReadBackup(COfflineChain& chain, const std::string& bytes);
