#pragma once

#include <optional>
#include <string>
#include <vector>

#include "CallFrame.h"

// Compares what the GINA received and returned with what Winlogon passed and got.

/// The arguments that reached the GINA, in words.
std::string DescribeReached(const CCallFrame& frame, const StandinRecord& record);

/// What came back to Winlogon, in words.
std::string DescribeCameBack(const CCallFrame& frame, LONG nResult);

/// One sentence for each argument that changed on its way to the GINA, and for each result or out-value
/// that changed on its way back. Where the GINA failed inside the call, its default result must come back.
/// pluginsResult is what a plugin is known to have given in place of the GINA's result; what else plugins
/// change, the step of the frame says.
std::vector<std::string> Compare(const CCallFrame& frame, const StandinRecord& record, LONG nResult,
                                 std::optional<LONG> pluginsResult = std::nullopt);

/// The same for a call that did not reach the GINA because of a plugin.
std::vector<std::string> CompareWithoutGina(const CCallFrame& frame, std::optional<LONG> pluginsResult,
                                            LONG nResult);
