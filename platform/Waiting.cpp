#include <vector>

#include "Call.h"
#include "MessageQueue.h"
#include "Waitable.h"

namespace Native {
namespace {

/// Never destroyed: threads may wait beyond the end of main.
struct CState
{
    std::mutex mutex;
    std::condition_variable changed;
};

CState& GetState()
{
    static auto& state = *new CState;
    return state;
}

std::shared_ptr<CWaitable> FindWaitable(HANDLE hObject)
{
    const auto pObject = HandleTable::Find<CWaitable>(hObject);
    Require(pObject != nullptr, ERROR_INVALID_HANDLE);
    return pObject;
}

} // namespace

Waits::CLock Waits::Lock()
{
    return CLock(GetState().mutex);
}

void Waits::WakeAll() noexcept
{
    GetState().changed.notify_all();
}

bool Waits::SleepUntil(CLock& lock, std::chrono::steady_clock::time_point end)
{
    return GetState().changed.wait_until(lock, end) == std::cv_status::no_timeout;
}

void Waits::Sleep(CLock& lock)
{
    GetState().changed.wait(lock);
}

} // namespace Native

using namespace Native;

DWORD WINAPI WaitForSingleObject(HANDLE hObject, DWORD dwMilliseconds) noexcept
{
    return LastErrorCall(PlatformCall::WaitForSingleObject, nullptr, DWORD(WAIT_FAILED), [&] {
        const auto pObject = FindWaitable(hObject);
        Waits::CLock lock = Waits::Lock();
        if (!Waits::WaitFor(lock, dwMilliseconds, [&] { return pObject->IsSignalled(); })) {
            return DWORD(WAIT_TIMEOUT);
        }
        pObject->Consume();
        return DWORD(WAIT_OBJECT_0);
    });
}

DWORD WINAPI MsgWaitForMultipleObjects(DWORD dwCount, const HANDLE* phObjects, BOOL bWaitAll,
                                       DWORD dwMilliseconds, DWORD dwWakeMask) noexcept
{
    return LastErrorCall(PlatformCall::MsgWaitForMultipleObjects, nullptr, DWORD(WAIT_FAILED), [&] {
        Require(!bWaitAll && dwWakeMask == QS_ALLINPUT, ERROR_INVALID_PARAMETER);
        std::vector<std::shared_ptr<CWaitable>> objects;
        for (DWORD dwIndex = 0; dwIndex < dwCount; ++dwIndex) {
            objects.push_back(FindWaitable(phObjects[dwIndex]));
        }
        Waits::CLock lock = Waits::Lock();
        const CMessageQueue& queue = GetOwnQueue(lock);
        DWORD dwIndex = 0;
        const bool bEnded = Waits::WaitFor(lock, dwMilliseconds, [&] {
            for (dwIndex = 0; dwIndex < dwCount && !objects[dwIndex]->IsSignalled(); ++dwIndex) {
            }
            return dwIndex < dwCount || queue.bNewInput;
        });
        if (bEnded && dwIndex < dwCount) {
            objects[dwIndex]->Consume();
        }
        return bEnded ? WAIT_OBJECT_0 + dwIndex : DWORD(WAIT_TIMEOUT);
    });
}
