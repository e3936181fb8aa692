#pragma once

#include "CriticalSection.h"
#include "guard/FaultGuard.h"

/// Faults if the stack is about to end: better here, where nothing is held yet.
__attribute__((noinline)) inline void RequireStack()
{
    volatile char bytes[16384];
    bytes[0] = 0;
    static_cast<void>(bytes[0]);
}

/// Runs body() with the lock held and returns its result. A processor fault runs no destructors, so it is
/// caught inside: the lock is released, and the fault is thrown as CForeignFault.
template <typename Body>
auto CallLocked(CCriticalSection& lock, Body body)
{
    RequireStack();
    const CCriticalSection::CLock held(lock);
    return CallWithinHost(body);
}
