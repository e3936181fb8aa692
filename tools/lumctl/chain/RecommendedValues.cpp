#include "RecommendedValues.h"

#include "GinaNames.h"
#include "MachineScope.h"

namespace {

constexpr DWORD ALL_EVENT_TYPES = EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE;

CValueData MakePath(const WCHAR* szPath)
{
    CValueData data = MakeText(szPath);
    data->dwType = REG_EXPAND_SZ;
    return data;
}

// One row for each setting. In a registry that has none of them, the library does nothing beyond its chain.
const CChainValue RECOMMENDED[] = {
    {{LUM_GINA_MTM, EVENT_LOG_VALUE}, MakeNumber(1)},
    {{EVENT_SOURCE_KEY, TEXT("EventMessageFile")}, MakePath(TEXT("%SystemRoot%\\system32\\lum_gina.dll"))},
    {{EVENT_SOURCE_KEY, TEXT("TypesSupported")}, MakeNumber(ALL_EVENT_TYPES)},
};

} // namespace

bool AddRecommendedValues(CChainValues& values)
{
    bool bAdded = false;
    for (const CChainValue& value : RECOMMENDED) {
        // A loaded hive has no event sources, which are in that of SYSTEM.
        if (CMachineScope::Holds(value.place.key) && !ReadValue(value.place)) {
            values.Set(value.place, value.data);
            bAdded = true;
        }
    }
    return bAdded;
}
