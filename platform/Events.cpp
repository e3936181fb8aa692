#include "Call.h"
#include "Waitable.h"

namespace {

using namespace Native;

class CEvent : public CWaitable
{
public:
    CEvent(bool bManualReset, bool bSignalled) : m_bManualReset(bManualReset), m_bSignalled(bSignalled) {}

    bool IsSignalled() const noexcept override { return m_bSignalled; }
    void Consume() noexcept override { m_bSignalled = m_bSignalled && m_bManualReset; }

    void Set(bool bSignalled) noexcept
    {
        m_bSignalled = bSignalled;
        if (bSignalled) {
            Waits::WakeAll();
        }
    }

private:
    const bool m_bManualReset;
    bool m_bSignalled;
};

BOOL SetState(PlatformCall call, HANDLE hEvent, bool bSignalled) noexcept
{
    return LastErrorCall(call, nullptr, FALSE, [&] {
        const auto pEvent = HandleTable::Find<CEvent>(hEvent);
        Require(pEvent != nullptr, ERROR_INVALID_HANDLE);
        const Waits::CLock lock = Waits::Lock();
        pEvent->Set(bSignalled);
        return TRUE;
    });
}

} // namespace

HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES, BOOL bManualReset, BOOL bInitialState,
                           LPCWSTR szName) noexcept
{
    return LastErrorCall(PlatformCall::CreateEventW, nullptr, HANDLE(nullptr), [&] {
        Require(szName == nullptr, ERROR_INVALID_PARAMETER);
        return HandleTable::Add(std::make_shared<CEvent>(bManualReset != FALSE, bInitialState != FALSE));
    });
}

BOOL WINAPI SetEvent(HANDLE hEvent) noexcept
{
    return SetState(PlatformCall::SetEvent, hEvent, true);
}

BOOL WINAPI ResetEvent(HANDLE hEvent) noexcept
{
    return SetState(PlatformCall::ResetEvent, hEvent, false);
}
