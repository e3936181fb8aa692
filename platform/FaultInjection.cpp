#include "platform/FaultInjection.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "Text.h"

namespace Native {

std::atomic<int> g_nInjections;

namespace {

std::mutex g_mutex;
std::vector<CFaultInjection*> g_injections;

bool IsNamed(CCallName name, LPCWSTR szName)
{
    if (name.szNarrow != nullptr) {
        const std::string narrow = name.szNarrow;
        return CompareNoCase(WideText(narrow.begin(), narrow.end()), szName) == 0;
    }
    return name.szWide != nullptr && CompareNoCase(name.szWide, szName) == 0;
}

} // namespace

DWORD TakeInjectedFault(PlatformCall call, CCallName name) noexcept
{
    const std::lock_guard lock(g_mutex);
    DWORD dwFault = ERROR_SUCCESS;
    for (CFaultInjection* pInjection : g_injections) {
        const DWORD dwError = pInjection->Take(call, name);
        dwFault = dwFault != ERROR_SUCCESS ? dwFault : dwError;
    }
    return dwFault;
}

} // namespace Native

using namespace Native;

CFaultInjection::CFaultInjection(CPlatformCalls calls, DWORD dwUse, DWORD dwError, LPCWSTR szName,
                                 FaultRepeat repeat)
    : m_calls(calls), m_dwUse(dwUse), m_dwError(dwError), m_szName(szName), m_repeat(repeat)
{
    const std::lock_guard lock(g_mutex);
    g_injections.push_back(this);
    ++g_nInjections;
}

CFaultInjection::~CFaultInjection()
{
    const std::lock_guard lock(g_mutex);
    g_injections.erase(std::find(g_injections.begin(), g_injections.end(), this));
    --g_nInjections;
}

DWORD CFaultInjection::GetUses() const noexcept
{
    const std::lock_guard lock(g_mutex);
    return m_dwUses;
}

DWORD CFaultInjection::Take(PlatformCall call, const CCallName& name) noexcept
{
    const bool bMine = m_calls.Contains(call) && (m_szName == nullptr || IsNamed(name, m_szName));
    if (!bMine) {
        return ERROR_SUCCESS;
    }
    ++m_dwUses;
    const bool bFails = m_repeat == FaultRepeat::Once ? m_dwUses == m_dwUse : m_dwUses >= m_dwUse;
    return bFails ? m_dwError : ERROR_SUCCESS;
}
