#include <algorithm>

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

// The host is loaded for one write with the value that it had before. It bears one that names nothing or
// itself; a GINA that is named and breaks off, or leads back, it does not.
TEST_F(BootSafety, HangsForOneWriteOnWhatTheHostNamedBefore)
{
    std::size_t nUnsafe = 0;
    for (const std::string stale : {"lum_gina.dll", "gone.dll", "wpnGina.dll", "PLinkGina.dll"}) {
        m_stale = stale;
        for (const CRow& row : ROWS) {
            if (std::string(row.szChange).find("resync") != std::string::npos) {
                continue;
            }
            std::vector<std::string> moments = UnsafeMoments(row);
            std::erase_if(moments, [&](const std::string& moment) {
                return std::find(row.unsafe.begin(), row.unsafe.end(), moment) != row.unsafe.end();
            });
            nUnsafe += moments.size();
            const bool bFound = !moments.empty() && moments[0].find(stale) != std::string::npos;
            EXPECT_TRUE(moments.empty() ||
                        (bFound && moments.size() == 1 && stale.find("Gina") < stale.size()))
                << stale << " [" << row.szBefore << "] " << row.szChange << testing::PrintToString(moments);
        }
    }
    EXPECT_EQ(6u, nUnsafe);
}

} // namespace
