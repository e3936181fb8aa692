#pragma once

#include <atomic>

// GoogleTest's place for what a port supplies itself. The compiler of the Windows target has no std::mutex,
// and the one thing that GoogleTest needs it for there is this class, which only its own tests use.

#define GTEST_HAS_NOTIFICATION_ 1

namespace testing {
namespace internal {

class Notification
{
public:
    void Notify() { m_bNotified = true; }
    void WaitForNotification() const
    {
        while (!m_bNotified) {
        }
    }

private:
    std::atomic<bool> m_bNotified = false;
};

} // namespace internal
} // namespace testing
