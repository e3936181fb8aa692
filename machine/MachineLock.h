#pragma once

#include <cstdint>
#include <string>

#include <windows.h>

/// Keeps other tools from the chain of a machine as long as it exists: what is read meanwhile holds until it
/// has been written. It is the machine's own, or that of a registry file. One at a time in a thread.
class CMachineLock
{
public:
    /// registry: the .reg file that is the machine's registry; empty for the system's own, which natively
    /// belongs to the process and needs no lock. Waits for the one who has it, half a minute at most, and
    /// says so on standard error. Throws CSetupError.
    explicit CMachineLock(const std::string& registry);
    ~CMachineLock();
    CMachineLock(const CMachineLock&) = delete;
    CMachineLock& operator=(const CMachineLock&) = delete;

    /// Whether it is on this file.
    bool IsOn(const std::string& path) const;

private:
    /// ERROR_SUCCESS, ERROR_SHARING_VIOLATION when another one has it, or why it cannot be had.
    DWORD Take(const std::string& registry);

    /// The system's handle of it; -1 for none.
    std::intptr_t m_nLock = -1;
};
