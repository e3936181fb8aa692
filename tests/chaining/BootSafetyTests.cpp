#include <functional>
#include <set>

#include "ChainMachine.h"
#include "platform/FaultInjection.h"

namespace {

const std::set<std::string> TERMINATORS = {"msgina.dll", "qslogon.dll"};
const std::set<std::string> OTHERS = {"wpnGina.dll", "PLinkGina.dll", "kvs_gina.dll", "rec.dll"};

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

    /// What keeps the machine from coming up with these values, empty when it comes up. The host comes up
    /// whatever follows it, unless that is itself: it falls back to msgina.dll.
    static std::string Boot(const Values& values, const std::set<std::string>& missing)
    {
        std::set<std::string> loaded;
        std::string from = "Winlogon";
        std::string next = values.count(from) != 0 ? values.at(from) : "msgina.dll";
        while (TERMINATORS.count(next) == 0 || missing.count(next) != 0) {
            if (next == "lum_gina.dll") {
                const auto own = values.find(next);
                return own != values.end() && own->second == next ? "lum_gina.dll loads itself" : "";
            }
            if (missing.count(next) != 0 || OTHERS.count(next) == 0 || !loaded.insert(next).second) {
                return from + " loads " + (next.empty() ? "nothing" : next);
            }
            from = next;
            next = values.count(from) != 0 ? values.at(from) : "";
        }
        return "";
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
    EXPECT_EQ((Moments{"0: wpnGina.dll loads nothing", "1: wpnGina.dll loads nothing"}),
              repair("wpnGina.dll"));
}

// Chains are written first to last, so that a GINA may be loaded before its passthrough value is right.
TEST_F(BootSafety, WhatTheOrderOfWritesLeavesUnsafe)
{
    struct
    {
        const char* szWhat;
        std::function<std::function<void()>()> before;
        std::set<std::string> missing; ///< GINAs whose DLL is no longer there
        Moments moments;
    } const rows[] = {
        {"another GINA is put first", Change("msgina.dll", Insert("wpnGina.dll", nullptr, true)), {}, {}},
        {"another GINA is put first2", Change("lum_gina.dll msgina.dll", Insert("wpnGina.dll", nullptr, true)), {}, {}},
        {"behind", Change("wpnGina.dll msgina.dll", Insert("PLinkGina.dll", "msgina.dll", false)), {}, {}},
        {"behind", Change("wpnGina.dll msgina.dll", Insert("rec.dll", "msgina.dll", false)), {}, {}},
        {"empty", Change("", Insert("kvs_gina.dll", nullptr, true)), {}, {}},
        {"empty", Change("", Insert("x.dll", nullptr, true)), {}, {}},
        {"two GINAs took the host's place", Resync("lum_gina.dll msgina.dll",
         {{"Winlogon", "wpnGina.dll"}, {"wpnGina.dll", "PLinkGina.dll"}, {"PLinkGina.dll", "msgina.dll"}}), {}, {}},
        {"uninst", Resync("wpnGina.dll msgina.dll",
         {{"Winlogon", "msgina.dll"}, {"wpnGina.dll", ""}}), {"wpnGina.dll"}, {}},
        {"uninst2", Resync("wpnGina.dll lum_gina.dll msgina.dll",
         {{"Winlogon", "msgina.dll"}, {"wpnGina.dll", ""}}), {"wpnGina.dll"}, {}},
        {"uninst3", Resync("wpnGina.dll lum_gina.dll msgina.dll",
         {{"Winlogon", "qslogon.dll"}}), {"wpnGina.dll"}, {}},
        {"uninst4", Resync("wpnGina.dll lum_gina.dll msgina.dll",
         {{"Winlogon", "lum_gina.dll"}}), {"wpnGina.dll"}, {}},
        {"taken out by itself", Resync("lum_gina.dll wpnGina.dll msgina.dll",
         {{"lum_gina.dll", "msgina.dll"}}), {"wpnGina.dll"}, {}},
        {"x", Resync("wpnGina.dll PLinkGina.dll lum_gina.dll msgina.dll",
         {{"Winlogon", "wpnGina.dll"}, {"wpnGina.dll", ""}}), {}, {}},
        {"y", Resync("lum_gina.dll wpnGina.dll msgina.dll",
         {{"lum_gina.dll", "kvs_gina.dll"}, {"kvs_gina.dll", "wpnGina.dll"}}), {}, {}},
        {"z", Resync("wpnGina.dll lum_gina.dll msgina.dll",
         {{"Winlogon", "PLinkGina.dll"}, {"PLinkGina.dll", "kvs_gina.dll"}, {"kvs_gina.dll", "msgina.dll"}, {"wpnGina.dll",""}}), {}, {}},
    };
    for (const auto& row : rows) {
        SetRecord("rec.dll", "msgina.dll,0,0,0,0");
        EXPECT_EQ(row.moments, UnsafeMoments(row.before, row.missing)) << row.szWhat;
    }
}

} // namespace
