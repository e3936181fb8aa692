#pragma once

#include <csignal>

namespace FaultGuard {

/// The signals by which processor faults arrive. While it exists, the innermost guard of the thread
/// gets them; without one, whoever handled them before.
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
