#include "ServicePeriod.h"

#include <algorithm>

#include "Exceptions.h"
#include "LUMRegistry.h"

namespace {

constexpr DWORD DEFAULT_SECONDS = 5;
constexpr DWORD MILLISECONDS_PER_SECOND = 1000;
// A longer period would overflow, or be INFINITE.
constexpr DWORD LONGEST_SECONDS = (INFINITE - 1) / MILLISECONDS_PER_SECOND;

} // namespace

DWORD GetServicePeriod(CLUMRegistry& registry, bool (CLUMRegistry::*pfnGet)(DWORD*, bool),
                       bool bRefresh) noexcept
{
    DWORD dwSeconds = 0;
    bool bRead = false;
    try {
        bRead = (registry.*pfnGet)(&dwSeconds, bRefresh);
    } catch (...) {
        ReportIf<CMessage>();
    }
    dwSeconds = bRead && dwSeconds != 0 ? dwSeconds : DEFAULT_SECONDS;
    return std::min(dwSeconds, LONGEST_SECONDS) * MILLISECONDS_PER_SECOND;
}
