#pragma once

#include "ChainView.h"

/// How much a finding matters to the next boot of the machine.
enum class Severity
{
    Danger,  ///< it does not come up
    Doubt,   ///< whether it comes up cannot be seen
    Warning, ///< it comes up, and not as it should be
};

struct CFinding
{
    Severity severity;
    std::string text;
    std::string remedy;
};

/// What is wrong with a chain. system: where DLLs are looked for, see InspectDll.
std::vector<CFinding> CheckChain(const CChainView& view, const WideText& system);

bool HasSeverity(const std::vector<CFinding>& findings, Severity severity);

/// Prints each finding with its remedy.
void PrintFindings(const std::vector<CFinding>& findings, std::string& output);
/// The same, and whether the next boot is safe: null when that cannot be told.
void PrintFindingsJson(const std::vector<CFinding>& findings, std::string& output);
