#pragma once

#include "ExceptionFrame.h"

namespace FaultGuard {

/// Whether an entry is a CHostFrames.
bool IsHostFrames(const CExceptionFrame& frame) noexcept;

/// Whether there are host frames inside pFrame whose faults keep their default effect.
bool HasDefaultFaultsInside(const CExceptionFrame* pFrame) noexcept;

} // namespace FaultGuard
