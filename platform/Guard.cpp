#include "Guard.h"

namespace FaultGuard {

void CGuard::EnterHostFrames(HostFaults faults) noexcept
{
    ++m_nHostFrames;
    m_nDefaultFaults += faults == HostFaults::Default;
}

void CGuard::LeaveHostFrames(HostFaults faults) noexcept
{
    --m_nHostFrames;
    m_nDefaultFaults -= faults == HostFaults::Default;
}

} // namespace FaultGuard

CHostFrames::CHostFrames(HostFaults faults) noexcept
    : m_pGuard(FaultGuard::CGuard::GetInnermost()), m_Faults(faults)
{
    if (m_pGuard != nullptr) {
        m_pGuard->EnterHostFrames(m_Faults);
    }
}

CHostFrames::~CHostFrames()
{
    if (m_pGuard != nullptr) {
        m_pGuard->LeaveHostFrames(m_Faults);
    }
}
