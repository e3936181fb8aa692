#pragma once

#include "ChainView.h"
#include "Finding.h"

/// Finds what is wrong with a chain. system: where DLLs are looked for, see InspectDll. A remedy that names a
/// lumctl command names one that lumctl carries out on this machine.
std::vector<CFinding> CheckChain(const CChainView& view, const WideText& system, Moment moment = Moment::Now);

bool HasSeverity(const std::vector<CFinding>& findings, Severity severity);

/// Prints each finding with its remedy. Marks those that a change would cause.
void PrintFindings(const std::vector<CFinding>& findings, std::string& output, Moment moment = Moment::Now);
/// The same, whether the next boot is safe (null when that cannot be told), and where DLLs were looked for.
void PrintFindingsJson(const std::vector<CFinding>& findings, const CDllSearch& search, std::string& output);
