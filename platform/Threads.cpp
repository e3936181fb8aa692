#include <windows.h>

#include <cstdlib>
#include <system_error>
#include <thread>

#include <unistd.h>

#include "Call.h"
#include "Waitable.h"

namespace {

using namespace Native;

/// A thread; signalled once its procedure has returned.
class CThreadHandle : public CWaitable
{
public:
    bool IsSignalled() const noexcept override { return m_bFinished; }

    /// As on Windows, a procedure may be declared with another result of 32 bits. The sanitizer would object.
    __attribute__((no_sanitize("undefined"))) void Run(LPTHREAD_START_ROUTINE pfnStart, LPVOID pParameter)
    {
        Change([this] { m_dwThreadId = GetCurrentThreadId(); });
        pfnStart(pParameter);
        Change([this] { m_bFinished = true; });
    }

    /// Waits until the thread has told it.
    DWORD GetThreadId() const
    {
        Waits::CLock lock = Waits::Lock();
        Waits::WaitFor(lock, INFINITE, [this] { return m_dwThreadId != 0; });
        return m_dwThreadId;
    }

private:
    template <typename Body>
    static void Change(Body body)
    {
        const Waits::CLock lock = Waits::Lock();
        body();
        Waits::WakeAll();
    }

    DWORD m_dwThreadId = 0;
    bool m_bFinished = false;
};

} // namespace

DWORD WINAPI GetCurrentThreadId() noexcept
{
    return static_cast<DWORD>(gettid());
}

DWORD WINAPI SuspendThread(HANDLE) noexcept
{
    SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
    return 0xFFFFFFFF;
}

void WINAPI ExitProcess(UINT nStatus) noexcept
{
    std::exit(static_cast<int>(nStatus));
}

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T, LPTHREAD_START_ROUTINE pfnStart, LPVOID pParameter,
                           DWORD dwCreationFlags, DWORD* pdwThreadId) noexcept
{
    return LastErrorCall(PlatformCall::CreateThread, nullptr, HANDLE(nullptr), [&] {
        Require(dwCreationFlags == 0, ERROR_INVALID_PARAMETER);
        const auto pThread = std::make_shared<CThreadHandle>();
        // The handle is made first: a thread that runs cannot be taken back.
        const HANDLE hThread = HandleTable::Add(pThread);
        try {
            std::thread([=] { pThread->Run(pfnStart, pParameter); }).detach();
        } catch (const std::exception&) {
            HandleTable::Close(hThread);
            throw CCallError{ERROR_NOT_ENOUGH_MEMORY};
        }
        if (pdwThreadId != nullptr) {
            *pdwThreadId = pThread->GetThreadId();
        }
        return hThread;
    });
}
