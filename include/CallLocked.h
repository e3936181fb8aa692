#pragma once

#include "CriticalSection.h"
#include "guard/FaultGuard.h"

/// Runs body() with the lock held and returns its result. A processor fault runs no destructors, so it is
/// caught inside: the lock is released, and the fault is thrown as CForeignFault.
template <typename Body>
auto CallLocked(CCriticalSection& lock, Body body)
{
    const CCriticalSection::CLock held(lock);
    return CallWithinHost(body);
}
