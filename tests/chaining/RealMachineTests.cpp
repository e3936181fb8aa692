#include <algorithm>
#include <fstream>
#include <iterator>

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

    /// The whole registry, as the system's editor would export it.
    static std::vector<std::string> Export()
    {
        EXPECT_EQ(ERROR_SUCCESS, MachineRegistry::Save(TEXT("export.reg")));
        std::ifstream file("export.reg", std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(file)), {});
        std::erase_if(bytes, [](char ch) { return ch == 0 || ch == '\r'; });
        std::vector<std::string> lines;
        std::size_t nStart = 0;
        for (std::size_t nEnd = 0; (nEnd = bytes.find('\n', nStart)) != std::string::npos; nStart = nEnd + 1)
        {
            lines.push_back(bytes.substr(nStart, nEnd - nStart));
        }
        return lines;
    }

    /// What an operation has changed: the lines gone, then the lines that are new.
    template <typename Change>
    static std::vector<std::string> Difference(Change change)
    {
        const std::vector<std::string> before = Export();
        change();
        const std::vector<std::string> after = Export();
        std::vector<std::string> difference;
        const auto addMissing = [&](const std::string& mark, const auto& lines, const auto& others) {
            for (const std::string& line : lines) {
                if (std::find(others.begin(), others.end(), line) == others.end()) {
                    difference.push_back(mark + line);
                }
            }
        };
        addMissing("-", before, after);
        addMissing("+", after, before);
        return difference;
    }
};

TEST_F(RealMachine, IsReadWithoutBeingChanged)
{
    EXPECT_TRUE(Difference([this] {
                    EXPECT_EQ("wpnGina.dll PLinkGina.dll msgina.dll", ChainOf(*Build()));
                    StartHost();
                }).empty());
    WCHAR szText[260] = {};
    EXPECT_TRUE(m_pWinlogon->m_pUIHost->GetRegistryString(szText, 260, false));
    EXPECT_EQ("logonui.exe", Narrow(szText));
    DWORD dwQuota = 0;
    EXPECT_TRUE(m_pWinlogon->m_pSFCQuota->GetRegistryDword(&dwQuota, false));
    EXPECT_EQ(0xFFFFFFFFu, dwQuota);
}

TEST_F(RealMachine, EnablingChangesTwoValuesAndDisablingOne)
{
    const auto manager = Build();
    EXPECT_EQ((std::vector<std::string>{"-\"GinaDLL\"=\"\"", "+\"GinaDLL\"=\"lum_gina.dll\""}),
              Difference([&] {
                  EXPECT_TRUE(manager->InsertGinaIntoChainingList(TEXT("lum_gina.dll"), nullptr, true));
              }));
    EXPECT_EQ("lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll", ChainOf(*Build()));
    EXPECT_EQ((std::vector<std::string>{"-\"GinaDLL\"=\"lum_gina.dll\""}),
              Difference([&] { EXPECT_TRUE(manager->RemoveGinaFromChainingList(TEXT("lum_gina.dll"))); }));
    EXPECT_EQ("wpnGina.dll PLinkGina.dll msgina.dll", ChainOf(*Build()));
}

TEST_F(RealMachine, ReinstalledGinaIsKept)
{
    const auto manager = Build();
    EXPECT_TRUE(manager->InsertGinaIntoChainingList(TEXT("lum_gina.dll"), nullptr, true));
    // Its installer notes the host as the GINA to pass through to, and puts itself first.
    SetString(TEXT("SOFTWARE\\Brevik Systems\\Gina"), TEXT("GinaDLL"), TEXT("lum_gina.dll"));
    SetString(WINLOGON_KEY, WINLOGON_GINA_DLL, TEXT("BVGina01.DLL"));
    EXPECT_TRUE(Difference([&] { manager->ResyncWithRegistry(*Build(true)); }).empty());
    EXPECT_EQ("BVGina01.DLL lum_gina.dll wpnGina.dll PLinkGina.dll msgina.dll", ChainOf(*manager));
}

} // namespace
