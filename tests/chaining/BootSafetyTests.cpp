#include <functional>
#include <set>

#include "ChainMachine.h"
#include "platform/FaultInjection.h"

namespace {

class BootSafety : public CChainMachine
{
protected:
    using Operation = std::function<void(CRegistryManager&)>;

    static Operation Insert(const char* szGinaDLL, const char* szBefore, bool bAtFront)
    {
        return [=](CRegistryManager& manager) {
            manager.InsertGinaIntoChainingList(
                Widen(szGinaDLL).c_str(), szBefore != nullptr ? Widen(szBefore).c_str() : nullptr, bAtFront);
        };
    }
    static Operation Remove(const char* szGinaDLL)
    {
        return
            [=](CRegistryManager& manager) { manager.RemoveGinaFromChainingList(Widen(szGinaDLL).c_str()); };
    }

    /// Stops the machine after each registry write that an operation makes, in turn, and gives what keeps it
    /// from coming up then: "2: wpnGina.dll loads nothing". before: makes the machine, and gives the
    /// operation.
    static std::vector<std::string> UnsafeMoments(const std::function<std::function<void()>()>& before,
                                                  const std::set<std::string>& missing = {})
    {
        std::vector<std::string> moments;
        bool bStopped = true;
        for (DWORD dwWrites = 0; bStopped; ++dwWrites) {
            DeleteGinaKeys();
            const std::function<void()> operation = before();
            {
                const CFaultInjection stop = CFaultInjection::StopMachine(dwWrites + 1);
                operation();
                bStopped = stop.HasFired();
            }
            const std::string trouble = Boot(GetValues(), missing);
            if (!trouble.empty()) {
                moments.push_back(std::to_string(dwWrites) + ": " + trouble);
            }
        }
        return moments;
    }

    std::function<std::function<void()>()> Change(const char* szChain, const Operation& operation)
    {
        return [=, this] {
            SetValues(ValuesOf(szChain));
            m_pManager = Build();
            return [=, this] { operation(*m_pManager); };
        };
    }

    std::function<std::function<void()>()> Resync(const char* szOwn, const Values& found)
    {
        return [=, this] {
            Values values = ValuesOf(szOwn);
            SetValues(values);
            m_pManager = Build();
            for (const auto& [name, next] : found) {
                values[name] = next;
            }
            SetValues(values);
            m_pFresh = Build(true);
            return [this] { m_pManager->ResyncWithRegistry(*m_pFresh); };
        };
    }

    std::unique_ptr<CRegistryManager> m_pManager;
    std::unique_ptr<CRegistryManager> m_pFresh;
};

using Moments = std::vector<std::string>;

TEST_F(BootSafety, OfTheOperationsThatPeopleUse)
{
    struct
    {
        const char* szChain;
        Operation operation;
    } const rows[] = {
        {"", Insert("lum_gina.dll", nullptr, true)},
        {"msgina.dll", Insert("lum_gina.dll", nullptr, true)},
        {"wpnGina.dll msgina.dll", Insert("lum_gina.dll", nullptr, true)},
        {"wpnGina.dll PLinkGina.dll qslogon.dll", Insert("lum_gina.dll", nullptr, true)},
        {"lum_gina.dll msgina.dll", Remove("lum_gina.dll")},
        {"lum_gina.dll wpnGina.dll msgina.dll", Remove("lum_gina.dll")},
        {"lum_gina.dll wpnGina.dll msgina.dll", Remove("wpnGina.dll")},
        {"lum_gina.dll wpnGina.dll msgina.dll", Remove("msgina.dll")},
        {"wpnGina.dll lum_gina.dll msgina.dll", Remove("lum_gina.dll")},
        {"wpnGina.dll PLinkGina.dll msgina.dll", Remove("PLinkGina.dll")},
        {"wpnGina.dll PLinkGina.dll msgina.dll", Remove("wpnGina.dll")},
        {"wpnGina.dll msgina.dll", Remove("wpnGina.dll")},
        {"wpnGina.dll msgina.dll", Insert("lum_gina.dll", "msgina.dll", false)},
        {"lum_gina.dll msgina.dll", Insert("PLinkGina.dll", nullptr, false)},
        {"wpnGina.dll msgina.dll", Insert("qslogon.dll", nullptr, false)},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Moments(), UnsafeMoments(Change(row.szChain, row.operation))) << row.szChain;
    }
}

TEST_F(BootSafety, OfReadingTheChain)
{
    const auto repair = [this](const char* szChain) {
        return UnsafeMoments([=, this] {
            SetValues(ValuesOf(szChain));
            return [this] { Build(); };
        });
    };
    EXPECT_EQ(Moments(), repair("lum_gina.dll"));
    EXPECT_EQ(Moments(), repair("lum_gina.dll wpnGina.dll"));
    // Such a machine does not come up in the first place.
    EXPECT_EQ((Moments{"0: wpnGina.dll loads nothing", "1: wpnGina.dll loads nothing",
                       "2: wpnGina.dll loads nothing"}),
              repair("wpnGina.dll"));
}

// Chains are written first to last, so a GINA may be loaded before its passthrough value is right. Nobody
// asks whether the DLL of a GINA is still there.
TEST_F(BootSafety, WhatTheOrderOfWritesLeavesUnsafe)
{
    struct
    {
        const char* szWhat;
        std::function<std::function<void()>()> before;
        std::set<std::string> missing; ///< GINAs whose DLL is no longer there
        Moments moments;
    } const rows[] = {
        {"another GINA is put first",
         Change("msgina.dll", Insert("wpnGina.dll", nullptr, true)),
         {},
         {"1: wpnGina.dll loads nothing", "2: wpnGina.dll loads nothing", "3: wpnGina.dll loads nothing"}},
        {"another GINA is put behind one that is not the host",
         Change("wpnGina.dll msgina.dll", Insert("PLinkGina.dll", "msgina.dll", false)),
         {},
         {"2: PLinkGina.dll loads nothing", "3: PLinkGina.dll loads nothing",
          "4: PLinkGina.dll loads nothing"}},
        {"a GINA without a default becomes the chain",
         Change("", Insert("kvs_gina.dll", nullptr, true)),
         {},
         {"1: kvs_gina.dll loads nothing"}},
        {"an unknown GINA becomes the chain",
         Change("", Insert("x.dll", nullptr, true)),
         {},
         {"1: Winlogon loads x.dll"}},
        {"two GINAs took the host's place",
         Resync("lum_gina.dll msgina.dll", {{"Winlogon", "wpnGina.dll"},
                                            {"wpnGina.dll", "PLinkGina.dll"},
                                            {"PLinkGina.dll", "msgina.dll"}}),
         {},
         {"2: lum_gina.dll loads itself"}},
        {"the first GINA was uninstalled",
         Resync("wpnGina.dll lum_gina.dll msgina.dll", {{"Winlogon", "msgina.dll"}, {"wpnGina.dll", ""}}),
         {"wpnGina.dll"},
         {"1: Winlogon loads wpnGina.dll"}},
        {"the first GINA was uninstalled while the host is disabled",
         Resync("wpnGina.dll msgina.dll", {{"Winlogon", "msgina.dll"}, {"wpnGina.dll", ""}}),
         {"wpnGina.dll"},
         {"1: Winlogon loads wpnGina.dll"}},
        {"the first GINA was uninstalled, its value left behind",
         Resync("wpnGina.dll lum_gina.dll msgina.dll", {{"Winlogon", "msgina.dll"}}),
         {"wpnGina.dll"},
         {"1: Winlogon loads wpnGina.dll", "2: Winlogon loads wpnGina.dll", "3: Winlogon loads wpnGina.dll",
          "4: Winlogon loads wpnGina.dll"}},
        {"two GINAs took the place of the first and of the host",
         Resync("wpnGina.dll lum_gina.dll msgina.dll", {{"Winlogon", "PLinkGina.dll"},
                                                        {"PLinkGina.dll", "kvs_gina.dll"},
                                                        {"kvs_gina.dll", "msgina.dll"},
                                                        {"wpnGina.dll", ""}}),
         {},
         {"1: wpnGina.dll loads nothing"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.moments, UnsafeMoments(row.before, row.missing)) << row.szWhat;
    }
}

TEST_F(BootSafety, OfResynchronisingWithTheHostInFront)
{
    const Values rows[] = {
        {{"Winlogon", "msgina.dll"}},
        {{"Winlogon", "qslogon.dll"}},
        {{"Winlogon", "wpnGina.dll"}},
        {{"Winlogon", "x.dll"}},
        {{"Winlogon", "msgina.dll"}, {"wpnGina.dll", ""}},
        {{"Winlogon", "PLinkGina.dll"}, {"PLinkGina.dll", "wpnGina.dll"}},
        {{"Winlogon", "PLinkGina.dll"}, {"PLinkGina.dll", "lum_gina.dll"}},
        {{"lum_gina.dll", "msgina.dll"}},
        {{"lum_gina.dll", ""}},
        {{"wpnGina.dll", ""}},
        {{"wpnGina.dll", "lum_gina.dll"}},
        {},
    };
    for (const Values& found : rows) {
        Moments moments = UnsafeMoments(Resync("lum_gina.dll wpnGina.dll msgina.dll", found));
        // What others did is not the host's: only what it makes of that counts.
        std::erase_if(moments, [](const std::string& moment) { return moment[0] == '0'; });
        EXPECT_EQ(Moments(), moments) << testing::PrintToString(found);
    }
}

} // namespace
