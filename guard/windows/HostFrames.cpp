#include "HostFrames.h"

#include "guard/FaultGuard.h"

namespace FaultGuard {
namespace {

// It handles nothing: the entry is there to be found. There is one for each kind.
template <HostFaults faults>
EXCEPTION_DISPOSITION OnException(EXCEPTION_RECORD*, CExceptionFrame*, CONTEXT*, void*)
{
    return ExceptionContinueSearch;
}

ExceptionHandler* const s_Handlers[] = {OnException<HostFaults::Default>, OnException<HostFaults::Guarded>};

const void* GetHandler(HostFaults faults) noexcept
{
    return reinterpret_cast<const void*>(s_Handlers[static_cast<int>(faults)]);
}

} // namespace

bool IsHostFrames(const CExceptionFrame& frame) noexcept
{
    return frame.pfnHandler == GetHandler(HostFaults::Default) ||
           frame.pfnHandler == GetHandler(HostFaults::Guarded);
}

bool HasDefaultFaultsInside(const CExceptionFrame* pFrame) noexcept
{
    const CExceptionFrame* pInner = CExceptionFrame::GetInnermost();
    while (pInner != pFrame && pInner->pfnHandler != GetHandler(HostFaults::Default)) {
        pInner = pInner->pOuter;
    }
    return pInner != pFrame;
}

} // namespace FaultGuard

using FaultGuard::CExceptionFrame;

CHostFrames::CHostFrames(HostFaults faults) noexcept
    : m_pOuter(CExceptionFrame::GetInnermost()), m_pfnHandler(FaultGuard::GetHandler(faults))
{
    static_assert(offsetof(CHostFrames, m_pOuter) == offsetof(CExceptionFrame, pOuter));
    static_assert(offsetof(CHostFrames, m_pfnHandler) == offsetof(CExceptionFrame, pfnHandler));
    CExceptionFrame::SetInnermost(this);
}

CHostFrames::~CHostFrames()
{
    CExceptionFrame::SetInnermost(m_pOuter);
}
