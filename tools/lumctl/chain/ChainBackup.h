#pragma once

#include "OfflineChain.h"

/// The bytes of a .reg file that says in this order what these values are, and of which there is none that it
/// is deleted. Its last line, a comment, says that it is whole.
std::string WriteBackup(const CChainValues& values, const std::vector<CValuePlace>& order);

/// The values that a .reg file says. Chaining records in it are added to what is known. Throws CCommandError
/// when it is no .reg file or was cut short, says anything that is no value of the chain in it or of a GINA
/// in the built-in table, says it twice, or does not say what Winlogon loads.
CChainValues ReadBackup(COfflineChain& chain, const std::string& bytes);
