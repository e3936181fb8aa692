#include "platform/FaultGuard.h"

#include "SignalGuard.h"

using FaultGuard::CSignalGuard;

CHostFrames::CHostFrames(HostFaults faults) noexcept
    : m_pOuter(CSignalGuard::GetInnermost()), m_pfnHandler(nullptr), m_Faults(faults)
{
    if (m_pOuter != nullptr && m_Faults == HostFaults::Default) {
        static_cast<CSignalGuard*>(m_pOuter)->BeginDefaultFaults();
    }
}

CHostFrames::~CHostFrames()
{
    if (m_pOuter != nullptr && m_Faults == HostFaults::Default) {
        static_cast<CSignalGuard*>(m_pOuter)->EndDefaultFaults();
    }
}
