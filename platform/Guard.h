#pragma once

#include <windows.h>

#include "platform/FaultGuard.h"

namespace FaultGuard {

/// One guarded call in progress, as far as all systems have it in common. It lives in the frame of
/// RunGuarded and belongs to the thread that made the call.
class CGuard
{
public:
    /// The innermost guard of this thread; null outside all guards.
    static CGuard* GetInnermost() noexcept;

    void EnterHostFrames(HostFaults faults) noexcept;
    void LeaveHostFrames(HostFaults faults) noexcept;

    /// Whether the call is in host frames, so that what is thrown there is not thrown into the DLL.
    bool IsInHostFrames() const noexcept { return m_nHostFrames != 0; }

    /// Whether a fault inside the call is the guard's business.
    bool TakesFaults() const noexcept { return m_nDefaultFaults == 0; }

    CGuard(const CGuard&) = delete;
    CGuard& operator=(const CGuard&) = delete;

protected:
    CGuard() noexcept = default;
    ~CGuard() = default;

private:
    int m_nHostFrames = 0;
    int m_nDefaultFaults = 0; ///< those of the host frames whose faults keep their default effect
};

} // namespace FaultGuard
