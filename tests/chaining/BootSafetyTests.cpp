#include "ChangeMachine.h"
#include "platform/FaultInjection.h"

namespace {

class BootSafety : public CChangeMachine
{
protected:
    /// Stops the machine after each registry write of a row's last change, in turn, and gives what keeps it
    /// from coming up then: "2: wpnGina.dll loads nothing". What is unsafe before the first write is not the
    /// change's.
    std::vector<std::string> UnsafeMoments(const CRow& row)
    {
        std::vector<std::string> moments;
        bool bStopped = true;
        for (DWORD dwWrites = 0; bStopped; ++dwWrites) {
            const std::function<bool()> change = Prepare(row);
            {
                const CFaultInjection stop = CFaultInjection::StopMachine(dwWrites + 1);
                change();
                bStopped = stop.HasFired();
            }
            const std::string trouble = Boot(GetValues(), row.missing);
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
        EXPECT_EQ(row.unsafe, UnsafeMoments(row)) << "[" << row.szBefore << "] " << row.szChange;
    }
}

} // namespace
