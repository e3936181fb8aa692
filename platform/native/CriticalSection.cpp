#include <mutex>

#include <windows.h>

namespace {

std::recursive_mutex& GetMutex(LPCRITICAL_SECTION pSection)
{
    return *static_cast<std::recursive_mutex*>(pSection->LockSemaphore);
}

} // namespace

void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION pSection)
{
    pSection->LockSemaphore = new std::recursive_mutex;
}

void WINAPI EnterCriticalSection(LPCRITICAL_SECTION pSection) noexcept
{
    GetMutex(pSection).lock();
}

void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION pSection) noexcept
{
    GetMutex(pSection).unlock();
}

void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION pSection) noexcept
{
    delete &GetMutex(pSection);
    pSection->LockSemaphore = nullptr;
}
