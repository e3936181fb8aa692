#include "Standin.h"

#include <winwlx.h>

namespace {

constexpr LONG DEFAULT_RESULTS[] = {
#define STANDIN_RESULT(NAME, RESULT) RESULT,
    STANDIN_CALLS(STANDIN_RESULT)
#undef STANDIN_RESULT
};

} // namespace

CStandin g_Standin;

void CRecord::SetText(DWORD dwIndex, const WideText& value)
{
    text[dwIndex] = value;
    szText[dwIndex] = text[dwIndex].c_str();
}

CStandin::CStandin() : CCallRecorder(DEFAULT_RESULTS), m_dwVersion(WLX_VERSION_1_4) {}

CStandin::~CStandin()
{
    if (m_pfnDetachHook != nullptr) {
        m_pfnDetachHook();
    }
}

void CStandin::Reset()
{
    const CCriticalSection::CLock lock(m_lock);
    CCallRecorder::Reset();
    m_dwVersion = WLX_VERSION_1_4;
}

void CStandin::SetVersion(DWORD dwVersion)
{
    const CCriticalSection::CLock lock(m_lock);
    m_dwVersion = dwVersion;
}

void CStandin::SetDetachHook(void(WINAPI* pfnHook)())
{
    m_pfnDetachHook = pfnHook;
}

DWORD CStandin::GetVersion()
{
    const CCriticalSection::CLock lock(m_lock);
    return m_dwVersion;
}
