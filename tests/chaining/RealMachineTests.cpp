#include <algorithm>
#include <iterator>
#include <sstream>

#include "ChainMachine.h"
#include "machine/MachineRegistry.h"

namespace {

/// The whole registry, as the system's editor would export it.
std::multiset<std::string> Export()
{
    EXPECT_EQ(ERROR_SUCCESS, MachineRegistry::Save(TEXT("export.reg")));
    std::string bytes = ReadBytes("export.reg");
    std::erase_if(bytes, [](char ch) { return ch == 0 || ch == '\r'; });
    std::istringstream text(bytes);
    std::multiset<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.insert(line);
    }
    return lines;
}

/// What an operation has changed: the lines gone, then "->", then the lines that are new.
template <typename Change>
std::string Difference(Change change)
{
    const auto before = Export();
    change();
    const auto after = Export();
    Lines lines;
    std::set_difference(before.begin(), before.end(), after.begin(), after.end(), std::back_inserter(lines));
    lines.push_back("->");
    std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(lines));
    std::string difference;
    for (const std::string& line : lines) {
        difference += line + " ";
    }
    return difference;
}

using RealMachine = CChainMachine;

TEST_F(RealMachine, IsChangedInNothingButTheChain)
{
    ASSERT_EQ(ERROR_SUCCESS, MachineRegistry::Load(REAL_MACHINE_REG));
    std::unique_ptr<CRegistryManager> manager;
    const auto start = [&] {
        StartHost();
        manager = Build();
    };
    start();
    EXPECT_EQ("-> ", Difference(start));
    EXPECT_EQ("wpnGina.dll PLinkGina.dll msgina.dll", ChainOf(*manager));
    const auto enable = [&] {
        EXPECT_TRUE(manager->InsertGinaIntoChainingList(TEXT("lum_gina.dll"), nullptr, true));
    };
    EXPECT_EQ("\"GinaDLL\"=\"\" -> \"GinaDLL\"=\"lum_gina.dll\" ", Difference(enable));
    EXPECT_EQ("lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll", ChainOf(*Build()));
    EXPECT_EQ("\"GinaDLL\"=\"lum_gina.dll\" -> \"GinaDLL\"=\"wpnGina.dll\" ",
              Difference([&] { EXPECT_TRUE(manager->RemoveGinaFromChainingList(TEXT("lum_gina.dll"))); }));
    EXPECT_EQ("wpnGina.dll PLinkGina.dll msgina.dll", ChainOf(*Build()));
    enable();
    // An installer notes the host as the GINA to pass through to, and puts its own first.
    SetString(TEXT("SOFTWARE\\Brevik Systems\\Gina"), TEXT("GinaDLL"), TEXT("lum_gina.dll"));
    SetString(WINLOGON_KEY, WINLOGON_GINA_DLL, TEXT("BVGina01.DLL"));
    EXPECT_EQ("-> ", Difference([&] { manager->ResyncWithRegistry(*Build(true)); }));
    EXPECT_EQ("BVGina01.DLL lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll", ChainOf(*manager));
    MachineRegistry::Clear();
}

} // namespace
