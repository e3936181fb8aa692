#include <new>

#include <pthread.h>

#include <windows.h>

namespace {

// The mutex lies in the structure itself, as on Windows, so making one cannot fail for lack of memory.
static_assert(sizeof(pthread_mutex_t) <= sizeof(CRITICAL_SECTION));
static_assert(alignof(pthread_mutex_t) <= alignof(CRITICAL_SECTION));

pthread_mutex_t* GetMutex(LPCRITICAL_SECTION pSection) noexcept
{
    return std::launder(reinterpret_cast<pthread_mutex_t*>(pSection));
}

} // namespace

void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION pSection) noexcept
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(new (pSection) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void WINAPI EnterCriticalSection(LPCRITICAL_SECTION pSection) noexcept
{
    pthread_mutex_lock(GetMutex(pSection));
}

void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION pSection) noexcept
{
    pthread_mutex_unlock(GetMutex(pSection));
}

void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION pSection) noexcept
{
    pthread_mutex_destroy(GetMutex(pSection));
}
