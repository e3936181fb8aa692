#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "KernelObject.h"

namespace Native {

/// An object that threads wait for. Both operations are called with the lock of the waits held.
class CWaitable : public CKernelObject
{
public:
    virtual bool IsSignalled() const noexcept = 0;
    /// What a wait does to the object that has ended it.
    virtual void Consume() noexcept {}
};

/// All waiting of the process. One lock guards the state of everything that can be waited for, so a wait for
/// several things sees them all at one moment.
namespace Waits {

using CLock = std::unique_lock<std::mutex>;

CLock Lock();

/// To be called with the lock held when anything has become signalled.
void WakeAll() noexcept;

/// Releases the lock until it is woken. False when the time is over before that.
bool SleepUntil(CLock& lock, std::chrono::steady_clock::time_point end);
void Sleep(CLock& lock);

/// Waits until condition() holds; false when it does not within the time.
template <typename Condition>
bool WaitFor(CLock& lock, DWORD dwMilliseconds, Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(dwMilliseconds);
    bool bInTime = true;
    while (!condition()) {
        if (!bInTime) {
            return false;
        }
        if (dwMilliseconds == INFINITE) {
            Sleep(lock);
        } else {
            bInTime = SleepUntil(lock, end);
        }
    }
    return true;
}

} // namespace Waits

} // namespace Native
