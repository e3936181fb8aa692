#include <windows.h>

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

#include <unistd.h>

#include "Call.h"
#include "KernelObject.h"

namespace {

using namespace Native;

/// A thread; signalled once its procedure has returned.
class CThreadHandle : public CKernelObject
{
public:
    void Finish()
    {
        const std::lock_guard lock(m_mutex);
        m_bFinished = true;
        m_finished.notify_all();
    }

    /// False when it has not finished within the time.
    bool Wait(DWORD dwMilliseconds)
    {
        std::unique_lock lock(m_mutex);
        const auto finished = [this] { return m_bFinished; };
        if (dwMilliseconds == INFINITE) {
            m_finished.wait(lock, finished);
            return true;
        }
        return m_finished.wait_for(lock, std::chrono::milliseconds(dwMilliseconds), finished);
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_finished;
    bool m_bFinished = false;
};

} // namespace

DWORD WINAPI GetCurrentThreadId() noexcept
{
    return static_cast<DWORD>(gettid());
}

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T, LPTHREAD_START_ROUTINE pfnStart, LPVOID pParameter,
                           DWORD dwCreationFlags, DWORD*) noexcept
{
    return LastErrorCall(PlatformCall::CreateThread, nullptr, HANDLE(nullptr), [&] {
        // Threads run at once, and nobody asks for their identifiers.
        Require(dwCreationFlags == 0, ERROR_INVALID_PARAMETER);
        const auto pThread = std::make_shared<CThreadHandle>();
        try {
            std::thread([=] {
                pfnStart(pParameter);
                pThread->Finish();
            }).detach();
        } catch (const std::system_error&) {
            throw CCallError{ERROR_NOT_ENOUGH_MEMORY};
        }
        return HandleTable::Add(pThread);
    });
}

DWORD WINAPI WaitForSingleObject(HANDLE hObject, DWORD dwMilliseconds) noexcept
{
    return LastErrorCall(PlatformCall::WaitForSingleObject, nullptr, DWORD(WAIT_FAILED), [&] {
        const auto pThread = HandleTable::Find<CThreadHandle>(hObject);
        Require(pThread != nullptr, ERROR_INVALID_HANDLE);
        return pThread->Wait(dwMilliseconds) ? DWORD(WAIT_OBJECT_0) : DWORD(WAIT_TIMEOUT);
    });
}
