#include "ChangeMachine.h"
#include "platform/FaultInjection.h"

namespace {

using Moments = std::vector<std::string>;

class BootSafety : public CChangeMachine
{
protected:
    /// Stops the machine after each registry write that an operation makes, in turn, and gives what keeps it
    /// from coming up then: "2: wpnGina.dll loads nothing". before: makes the machine, and gives the
    /// operation. What is unsafe before the first write is not the operation's.
    static Moments UnsafeMoments(const std::function<std::function<bool()>()>& before,
                                 const std::set<std::string>& missing = {})
    {
        Moments moments;
        bool bStopped = true;
        for (DWORD dwWrites = 0; bStopped; ++dwWrites) {
            const std::function<bool()> operation = before();
            {
                const CFaultInjection stop = CFaultInjection::StopMachine(dwWrites + 1);
                operation();
                bStopped = stop.HasFired();
            }
            const std::string trouble = Boot(GetValues(), missing);
            if (!trouble.empty() && dwWrites != 0) {
                moments.push_back(std::to_string(dwWrites) + ": " + trouble);
            }
        }
        return moments;
    }
};

// Chains are written first to last, so a GINA may be loaded before its passthrough value is right. Nobody
// asks whether the DLL of a GINA is still there.
TEST_F(BootSafety, OfEachChangeIsWhatItsRowSays)
{
    for (const CRow& row : ROWS) {
        EXPECT_EQ(row.unsafe, UnsafeMoments([&] { return Prepare(row); }, row.missing))
            << "[" << row.szBefore << "] " << row.szChange;
    }
}

} // namespace
