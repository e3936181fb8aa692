#include "machine/MachineLock.h"

namespace {

/// For all sessions of the machine.
constexpr WCHAR NAME[] = L"Global\\LUMGinaChain";

} // namespace

CMachineLock::~CMachineLock()
{
    if (m_nLock != -1) {
        const auto hMutex = reinterpret_cast<HANDLE>(m_nLock);
        ReleaseMutex(hMutex);
        CloseHandle(hMutex);
    }
}

bool CMachineLock::IsOn(const std::string&) const
{
    return false;
}

DWORD CMachineLock::Take(const std::string&)
{
    const HANDLE hMutex = CreateMutexW(nullptr, FALSE, NAME);
    if (hMutex == nullptr) {
        return GetLastError();
    }
    // One that was killed leaves it abandoned, and what it left behind is read now.
    const DWORD dwWait = WaitForSingleObject(hMutex, 0);
    if (dwWait != WAIT_OBJECT_0 && dwWait != WAIT_ABANDONED) {
        CloseHandle(hMutex);
        return dwWait == WAIT_TIMEOUT ? ERROR_SHARING_VIOLATION : GetLastError();
    }
    m_nLock = reinterpret_cast<std::intptr_t>(hMutex);
    return ERROR_SUCCESS;
}
