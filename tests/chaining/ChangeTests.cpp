#include "ChangeMachine.h"

namespace {

class Change : public CChangeMachine
{
};

TEST_F(Change, LeavesTheChainThatItsRowSays)
{
    for (const CRow& row : ROWS) {
        SCOPED_TRACE(std::string("[") + row.szBefore + "] " + row.szChange);
        const std::function<bool()> change = Prepare(row);
        const Values before = GetValues();
        const std::string after = row.szAfter != nullptr ? row.szAfter : ChainOf(*m_pManager);
        ClearLog();
        EXPECT_EQ(row.szAfter != nullptr, change());
        EXPECT_EQ(row.szAfter != nullptr && after.empty() ? 1 : 0, Count("[WARNING] Chaining list is empty"));
        EXPECT_EQ(after, ChainOf(*m_pManager));
        const Values values = GetValues();
        if (row.szAfter == nullptr) {
            EXPECT_EQ(before, values);
            continue;
        }
        EXPECT_EQ(row.szRegistry != nullptr ? row.szRegistry : after, ChainOf(*Build(true)));
        // What was taken out keeps its passthrough value.
        for (const auto& [name, text] : before) {
            if (name != "Winlogon" && !m_pManager->IsGinaInChainingList(Widen(name).c_str())) {
                EXPECT_EQ(text, values.count(name) != 0 ? values.at(name) : "(none)") << name;
            }
        }
    }
}

} // namespace
