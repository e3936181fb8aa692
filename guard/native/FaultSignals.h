#pragma once

#include <csignal>

namespace FaultGuard {

/// Handles the signals by which processor faults arrive. While it exists, the innermost guard of the thread
/// gets them, or the previous handler if the thread has no guard.
class CFaultSignals
{
public:
    /// Installs the handlers, once in this module.
    static void Install();

    CFaultSignals(const CFaultSignals&) = delete;
    CFaultSignals& operator=(const CFaultSignals&) = delete;

private:
    CFaultSignals();
    ~CFaultSignals();
};

} // namespace FaultGuard
