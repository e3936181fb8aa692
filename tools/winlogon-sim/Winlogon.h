#pragma once

#include <string>
#include <vector>

#include "Calls.h"

// The simulated Winlogon, as its GINA sees it: a handle, a dispatch table, and the things that Winlogon
// passes by pointer. There is one, as there is one Winlogon in a process.
namespace Winlogon {

/// The value for an argument that Winlogon itself supplies.
ULONG_PTR GetValue(WinlogonValue value);

/// What the GINA left in WlxInitialize: the context of all later calls.
void SetContext(ULONG_PTR context);

/// The calls that arrived through the dispatch table since the last time, as "WlxSetTimeout(handle, 120)".
std::vector<std::string> TakeCallbacks();

} // namespace Winlogon
