#pragma once

#include "CriticalSection.h"
#include "guard/FaultGuard.h"

/// Runs body() under a lock and gives what it gives. A processor fault in it leaves the lock before it is
/// thrown as CForeignFault: faults run no destructors.
template <typename Body>
auto CallLocked(CCriticalSection& lock, Body body)
{
    const CCriticalSection::CLock held(lock);
    return CallWithinHost(body);
}
