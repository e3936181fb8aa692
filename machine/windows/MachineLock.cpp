#include "machine/MachineLock.h"

#include <sddl.h>

namespace {

/// For all sessions of the machine.
constexpr WCHAR NAME[] = L"Global\\LUMGinaChain";
/// SYSTEM and the administrators may do everything, others nothing. Without this a lock that SYSTEM has made
/// would be closed to administrators.
constexpr WCHAR RIGHTS[] = L"D:(A;;GA;;;SY)(A;;GA;;;BA)";

HANDLE OpenLock() noexcept
{
    SECURITY_ATTRIBUTES attributes = {sizeof(attributes), nullptr, FALSE};
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(RIGHTS, SDDL_REVISION_1,
                                                              &attributes.lpSecurityDescriptor, nullptr))
    {
        return nullptr;
    }
    const HANDLE hMutex = CreateMutexW(&attributes, FALSE, NAME);
    const DWORD dwError = GetLastError();
    LocalFree(attributes.lpSecurityDescriptor);
    SetLastError(dwError);
    return hMutex;
}

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
    const HANDLE hMutex = OpenLock();
    if (hMutex == nullptr) {
        return GetLastError();
    }
    // A program that was ended has abandoned the lock. What it left behind in the registry is read now.
    const DWORD dwWait = WaitForSingleObject(hMutex, 0);
    if (dwWait != WAIT_OBJECT_0 && dwWait != WAIT_ABANDONED) {
        CloseHandle(hMutex);
        return dwWait == WAIT_TIMEOUT ? ERROR_SHARING_VIOLATION : GetLastError();
    }
    m_nLock = reinterpret_cast<std::intptr_t>(hMutex);
    return ERROR_SUCCESS;
}
