#pragma once

#include "OfflineChain.h"

/// Returns the bytes of a .reg file that restores these values, in this order. A value that does not exist is
/// deleted by it. The last line, a comment, says that the file is whole.
std::string WriteBackup(const CChainValues& values, const std::vector<CValuePlace>& order);

/// Returns the values in such a file, and adds the chaining records in it to what the chain knows. Throws
/// CCommandError when the bytes are no .reg file or were cut short; when a value is there twice, or belongs
/// neither to the file's own chain nor to a GINA of the built-in table; and when Winlogon's GinaDLL is
/// missing.
CChainValues ReadBackup(COfflineChain& chain, const std::string& bytes);
