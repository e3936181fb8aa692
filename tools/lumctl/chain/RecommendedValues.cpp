#include "RecommendedValues.h"

#include "GinaNames.h"
#include "MachineScope.h"
#include "SafeStartNames.h"

namespace {

constexpr DWORD ALL_EVENT_TYPES = EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE;

CValueData MakePath(const WCHAR* szPath)
{
    CValueData data = MakeText(szPath);
    data->dwType = REG_EXPAND_SZ;
    return data;
}

constexpr DWORD STARTS_TO_END_IN_A_PLUGIN = 2;

// One row for each setting. In a registry that has none of them, the library does nothing beyond its chain.
const CChainValue RECOMMENDED[] = {
    {{LUM_GINA_MTM, EVENT_LOG_VALUE}, MakeNumber(1)},
    {{LUM_GINA_MTM, SAFE_START}, MakeNumber(STARTS_TO_END_IN_A_PLUGIN)},
    {{EVENT_SOURCE_KEY, TEXT("EventMessageFile")}, MakePath(TEXT("%SystemRoot%\\system32\\lum_gina.dll"))},
    {{EVENT_SOURCE_KEY, TEXT("TypesSupported")}, MakeNumber(ALL_EVENT_TYPES)},
};

} // namespace

bool AddRecommendedValues(CChainValues& values, bool bSafeStart)
{
    bool bAdded = false;
    for (const CChainValue& value : RECOMMENDED) {
        // A loaded hive has no event sources, which are in that of SYSTEM.
        const bool bWanted = bSafeStart || value.place.name != SAFE_START;
        if (bWanted && CMachineScope::Holds(value.place.key) && !ReadValue(value.place)) {
            values.Set(value.place, value.data);
            bAdded = true;
        }
    }
    return bAdded;
}
