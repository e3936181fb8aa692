#include "guard/FaultGuard.h"

#include "SignalGuard.h"

using FaultGuard::CSignalGuard;

CHostFrames::CHostFrames(HostFaults faults) noexcept
    : m_pOuter(faults == HostFaults::Default ? CSignalGuard::GetInnermost() : nullptr), m_pfnHandler(nullptr)
{
    if (m_pOuter != nullptr) {
        static_cast<CSignalGuard*>(m_pOuter)->BeginDefaultFaults();
    }
}

CHostFrames::~CHostFrames()
{
    if (m_pOuter != nullptr) {
        static_cast<CSignalGuard*>(m_pOuter)->EndDefaultFaults();
    }
}
