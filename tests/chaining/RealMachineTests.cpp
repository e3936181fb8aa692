#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "ChainMachine.h"
#include "machine/MachineRegistry.h"

namespace {

class RealMachine : public CChainMachine
{
protected:
    RealMachine()
    {
        std::string reason;
        EXPECT_EQ(ERROR_SUCCESS, MachineRegistry::Load(REAL_MACHINE_REG, &reason)) << reason;
        StartHost();
        ClearLog();
    }
    ~RealMachine() override { MachineRegistry::Clear(); }

    using Lines = std::multiset<std::string>;

    /// The whole registry, as the system's editor would export it.
    static Lines Export()
    {
        EXPECT_EQ(ERROR_SUCCESS, MachineRegistry::Save(TEXT("export.reg")));
        std::ifstream file("export.reg", std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(file)), {});
        std::erase_if(bytes, [](char ch) { return ch == 0 || ch == '\r'; });
        std::istringstream text(bytes);
        Lines lines;
        for (std::string line; std::getline(text, line);) {
            lines.insert(line);
        }
        return lines;
    }

    /// What an operation has changed: the lines gone, then "->", then the lines that are new.
    template <typename Change>
    static std::string Difference(Change change)
    {
        const Lines before = Export();
        change();
        const Lines after = Export();
        std::vector<std::string> lines;
        std::set_difference(before.begin(), before.end(), after.begin(), after.end(),
                            std::back_inserter(lines));
        lines.push_back("->");
        std::set_difference(after.begin(), after.end(), before.begin(), before.end(),
                            std::back_inserter(lines));
        std::string difference;
        for (const std::string& line : lines) {
            difference += line + " ";
        }
        return difference;
    }
};

TEST_F(RealMachine, IsReadWithoutBeingChanged)
{
    EXPECT_EQ("-> ", Difference([this] {
                  EXPECT_EQ("wpnGina.dll PLinkGina.dll msgina.dll", ChainOf(*Build()));
                  StartHost();
              }));
    WCHAR szText[260] = {};
    EXPECT_TRUE(m_pWinlogon->m_pUIHost->GetRegistryString(szText, 260, false));
    EXPECT_EQ("logonui.exe", Narrow(szText));
    DWORD dwQuota = 0;
    EXPECT_TRUE(m_pWinlogon->m_pSFCQuota->GetRegistryDword(&dwQuota, false));
    EXPECT_EQ(0xFFFFFFFFu, dwQuota);
}

TEST_F(RealMachine, IsChangedInNothingButTheChain)
{
    const auto manager = Build();
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
}

} // namespace
