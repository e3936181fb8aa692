#pragma once

#include <deque>

#include <windows.h>

#include "Waitable.h"

namespace Native {

/// The messages posted to a thread. Used with the lock of the waits held.
struct CMessageQueue
{
    std::deque<MSG> messages;
    /// Whether any has come since the thread looked last.
    bool bNewInput = false;
};

/// The queue of the calling thread, which has one from the first call on. Throws std::bad_alloc.
CMessageQueue& GetOwnQueue(const Waits::CLock& lock);

} // namespace Native
