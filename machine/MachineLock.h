#pragma once

#include <cstdint>
#include <string>

#include <windows.h>

/// Keeps other tools away from the chain of a machine: what a tool reads under the lock stays true until it
/// has written. The machine is the one that the tool runs on, or one whose registry is a file. A thread may
/// have one lock at a time.
class CMachineLock
{
public:
    /// Called once, when another program has the lock.
    using Waiting = void();

    /// registry: the .reg file that is the machine's registry. Empty: the system's own registry, which on the
    /// native target belongs to the process and needs no lock. Waits half a minute at most. Throws
    /// CSetupError.
    CMachineLock(const std::string& registry, Waiting* pfnWaiting);
    ~CMachineLock();
    CMachineLock(const CMachineLock&) = delete;
    CMachineLock& operator=(const CMachineLock&) = delete;

    /// Whether this is the file that is locked.
    bool IsOn(const std::string& path) const;

private:
    /// ERROR_SUCCESS; ERROR_SHARING_VIOLATION when another program has the lock; otherwise what went wrong.
    DWORD Take(const std::string& registry);

    /// The system's handle; -1 for none.
    std::intptr_t m_nLock = -1;
};
