#include "Standin.h"

#include <iterator>

#include "Failures.h"
#include <winwlx.h>

CStandin g_Standin;

namespace {

constexpr LONG DEFAULT_RESULTS[] = {
#define STANDIN_RESULT(NAME, RESULT) RESULT,
    STANDIN_CALLS(STANDIN_RESULT)
#undef STANDIN_RESULT
};
static_assert(std::size(DEFAULT_RESULTS) == STANDIN_CALL_COUNT);

/// Winlogon's calls may nest and other threads read the records, so the lock is never held while a hook
/// runs or a call fails.
class CLock
{
public:
    explicit CLock(CRITICAL_SECTION& section) : m_section(section) { EnterCriticalSection(&m_section); }
    ~CLock() { LeaveCriticalSection(&m_section); }
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;

private:
    CRITICAL_SECTION& m_section;
};

} // namespace

void CRecord::SetText(DWORD dwIndex, const WideText& value)
{
    text[dwIndex] = value;
    szText[dwIndex] = text[dwIndex].c_str();
}

CStandin::CStandin()
{
    InitializeCriticalSection(&m_lock);
    SetDefaults();
}

CStandin::~CStandin()
{
    DeleteCriticalSection(&m_lock);
    if (m_pfnDetachHook != nullptr) {
        m_pfnDetachHook();
    }
}

void CStandin::SetDefaults()
{
    m_dwVersion = WLX_VERSION_1_4;
    for (DWORD dwCall = 0; dwCall < STANDIN_CALL_COUNT; ++dwCall) {
        m_behaviours[dwCall] = {DEFAULT_RESULTS[dwCall], StandinFailure::None, 0, nullptr, nullptr};
    }
}

void CStandin::Reset()
{
    const CLock lock(m_lock);
    SetDefaults();
    m_records.clear();
}

void CStandin::SetVersion(DWORD dwVersion)
{
    const CLock lock(m_lock);
    m_dwVersion = dwVersion;
}

void CStandin::SetResult(StandinCall call, LONG nResult)
{
    const CLock lock(m_lock);
    Behaviour(call).nResult = nResult;
}

bool CStandin::SetFailure(StandinCall call, StandinFailure failure, DWORD dwCode)
{
    if (!CanFail(failure)) {
        return false;
    }
    const CLock lock(m_lock);
    Behaviour(call).failure = failure;
    Behaviour(call).dwCode = dwCode;
    return true;
}

void CStandin::SetHook(StandinCall call, StandinHook pfnHook, void* pContext)
{
    const CLock lock(m_lock);
    Behaviour(call).pfnHook = pfnHook;
    Behaviour(call).pHookContext = pContext;
}

void CStandin::SetDetachHook(void(WINAPI* pfnHook)())
{
    m_pfnDetachHook = pfnHook;
}

DWORD CStandin::GetRecordCount()
{
    const CLock lock(m_lock);
    return static_cast<DWORD>(m_records.size());
}

const StandinRecord* CStandin::GetRecord(DWORD dwIndex)
{
    const CLock lock(m_lock);
    return dwIndex < m_records.size() ? &m_records[dwIndex] : nullptr;
}

CRecord& CStandin::AddRecord(StandinCall call)
{
    const CLock lock(m_lock);
    CRecord& record = m_records.emplace_back();
    record.call = call;
    return record;
}

void CStandin::Act(const CRecord& record)
{
    CBehaviour behaviour;
    {
        const CLock lock(m_lock);
        behaviour = Behaviour(record.call);
    }
    if (behaviour.pfnHook != nullptr) {
        behaviour.pfnHook(behaviour.pHookContext, &record);
    }
    Fail(behaviour.failure, behaviour.dwCode);
}

DWORD CStandin::GetVersion()
{
    const CLock lock(m_lock);
    return m_dwVersion;
}

LONG CStandin::GetResult(StandinCall call)
{
    const CLock lock(m_lock);
    return Behaviour(call).nResult;
}
