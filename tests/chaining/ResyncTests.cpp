#include <cstdlib>
#include <random>

#include "ChainMachine.h"
#include "ResyncModel.h"

namespace {

Model::Ginas MakeRecords(bool bTurned)
{
    return {
        {"rec.dll", "msgina.dll", false, false}, {"nodef.dll", "", false, false},
        {"inc.dll", "wpnGina.dll", false, true}, {"term.dll", "", true, false},
        {"incterm.dll", "", true, true},         {"turned.dll", "msgina.dll", bTurned, false},
    };
}

// One GINA comes to end chains in a later version.
const Model::Ginas OLD_RECORDS = MakeRecords(false);
const Model::Ginas RECORDS = MakeRecords(true);

const char* const NAMES[] = {"lum_gina.dll", "wpnGina.dll",  "PLinkGina.dll", "kvs_gina.dll",
                             "rec.dll",      "nodef.dll",    "inc.dll",       "x.dll",
                             "BVGINA01.dll", "LUM_GINA.DLL", "turned.dll"};
const char* const ENDS[] = {"msgina.dll", "MSGINA.DLL",  "qslogon.dll",
                            "term.dll",   "incterm.dll", "turned.dll"};

unsigned long GetSetting(const char* szName, unsigned long nDefault)
{
    const char* szValue = std::getenv(szName);
    return szValue != nullptr ? std::strtoul(szValue, nullptr, 10) : nDefault;
}

class Resync : public CChainMachine
{
protected:
    Resync() { SetTraceMask(0); }

    void WriteRecords(const Model::Ginas& records)
    {
        for (const Model::CGina& gina : records) {
            const std::string fallback = gina.fallback.empty() ? "NULL" : gina.fallback;
            const std::string flags =
                std::string(gina.bTerminator ? ",1" : ",0") + ",0,0," + (gina.bIncompatible ? "1" : "0");
            SetRecord(gina.name.c_str(), (fallback + flags).c_str());
        }
    }

    void DeleteRecords()
    {
        for (const Model::CGina& gina : RECORDS) {
            SetString(OWN_KEY, Widen(gina.name).c_str(), TEXT("no record"));
        }
    }

    static void Compare(const CRegistryManager& manager, const Model::CManager& model, const Values& values)
    {
        std::string chain;
        for (const std::string& name : model.chain) {
            chain += (chain.empty() ? "" : " ") + name;
        }
        EXPECT_EQ(chain + (model.bIncomplete ? "..." : ""), ChainOf(manager));
        EXPECT_EQ(values, GetValues());
    }
};

/// Chains with everything that can be wrong with one.
class CGenerator
{
public:
    explicit CGenerator(unsigned nSeed) : m_engine(nSeed) {}

    bool OneIn(unsigned n) { return m_engine() % n == 0; }

    Model::Names Chain()
    {
        Model::Names chain;
        for (unsigned n = m_engine() % 4; n != 0; --n) {
            chain.push_back(Pick(NAMES));
        }
        if (OneIn(2) && !chain.empty()) {
            chain[m_engine() % chain.size()] = "lum_gina.dll";
        }
        if (!OneIn(5)) {
            chain.push_back(Pick(ENDS));
        }
        return chain;
    }

    /// A chain as an installer may leave it: one GINA more, one less or another, or a different one
    /// altogether.
    Model::Names Change(Model::Names chain)
    {
        if (chain.empty() || OneIn(4)) {
            return Chain();
        }
        const auto at = chain.begin() + static_cast<std::ptrdiff_t>(m_engine() % chain.size());
        switch (m_engine() % 4) {
        case 0:
            chain.insert(at, Pick(NAMES));
            break;
        case 1:
            chain.erase(at);
            break;
        case 2:
            *at = OneIn(2) ? Pick(NAMES) : Pick(ENDS);
            break;
        default:
            chain.assign(1, chain.back());
            break;
        }
        return chain;
    }

private:
    template <std::size_t n>
    std::string Pick(const char* const (&names)[n])
    {
        return names[m_engine() % n];
    }

    std::mt19937 m_engine;
};

TEST_F(Resync, DoesWhatTheModelDoes)
{
    const unsigned long nFirst = GetSetting("LUM_CHAIN_SEED", 1);
    const unsigned long nSeeds = GetSetting("LUM_CHAIN_COUNT", 20);
    for (unsigned long nSeed = nFirst; nSeed < nFirst + nSeeds; ++nSeed) {
        SCOPED_TRACE("LUM_CHAIN_SEED=" + std::to_string(nSeed) + " LUM_CHAIN_COUNT=1");
        CGenerator generate(static_cast<unsigned>(nSeed));
        const bool bKnownAtStart = !generate.OneIn(3);
        bKnownAtStart ? WriteRecords(OLD_RECORDS) : DeleteRecords();

        Values values;
        LeadThrough(generate.Chain(), values);
        LeadThrough(generate.Chain(), values);
        SetValues(values);
        const auto own = Build();
        Model::CManager ownModel = Model::Build(values, bKnownAtStart ? OLD_RECORDS : Model::Ginas(), false);
        if (generate.OneIn(4) && !ownModel.chain.empty()) {
            const std::string last = ownModel.chain.back();
            own->RemoveGinaFromChainingList(Widen(last).c_str());
            Model::Remove(ownModel, last, values);
        }
        Compare(*own, ownModel, values);

        WriteRecords(RECORDS);
        std::erase_if(values, [&](const auto&) { return generate.OneIn(8); });
        LeadThrough(generate.Change(ownModel.chain), values);
        SetValues(values);
        const auto fresh = Build(true);
        const Model::CManager freshModel = Model::Build(values, RECORDS, true);
        Compare(*fresh, freshModel, values);

        if (*own != *fresh) {
            own->ResyncWithRegistry(*fresh);
            Model::Resync(ownModel, freshModel, values, RECORDS);
            Compare(*own, ownModel, values);
        }
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(Resync, SettlesWhatInstallersDo)
{
    struct
    {
        const char* szWhat;
        const char* szOwn;
        Values found; ///< what the registry says afterwards, over the values of the host's chain
        const char* szChain;
        const char* szValues; ///< through which GINAs the registry leads in the end
    } const rows[] = {
        {"a GINA put itself before the host",
         "lum_gina.dll msgina.dll",
         {{"Winlogon", "wpnGina.dll"}, {"wpnGina.dll", "lum_gina.dll"}},
         "wpnGina.dll lum_gina.dll msgina.dll",
         "wpnGina.dll lum_gina.dll msgina.dll"},
        {"a GINA put itself before the host and passes by it",
         "lum_gina.dll wpnGina.dll msgina.dll",
         {{"Winlogon", "PLinkGina.dll"}, {"PLinkGina.dll", "wpnGina.dll"}},
         "lum_gina.dll wpnGina.dll msgina.dll",
         "lum_gina.dll wpnGina.dll msgina.dll"},
        {"two GINAs took the host's place",
         "lum_gina.dll msgina.dll",
         {{"Winlogon", "wpnGina.dll"}, {"wpnGina.dll", "PLinkGina.dll"}, {"PLinkGina.dll", "msgina.dll"}},
         "lum_gina.dll lum_gina.dll msgina.dll",
         "lum_gina.dll msgina.dll"},
        {"an incompatible GINA put itself before the host",
         "lum_gina.dll msgina.dll",
         {{"Winlogon", "inc.dll"}, {"inc.dll", "lum_gina.dll"}},
         "lum_gina.dll msgina.dll",
         "lum_gina.dll msgina.dll"},
        {"an incompatible GINA took another's place",
         "lum_gina.dll wpnGina.dll msgina.dll",
         {{"lum_gina.dll", "inc.dll"}, {"inc.dll", "msgina.dll"}},
         "lum_gina.dll msgina.dll",
         "lum_gina.dll msgina.dll"},
        {"an unknown GINA put itself first",
         "lum_gina.dll msgina.dll",
         {{"Winlogon", "x.dll"}},
         "lum_gina.dll msgina.dll",
         "lum_gina.dll msgina.dll"},
        {"a GINA behind the host lost its value",
         "lum_gina.dll wpnGina.dll msgina.dll",
         {{"wpnGina.dll", ""}},
         "lum_gina.dll msgina.dll",
         "lum_gina.dll msgina.dll"},
        {"the host lost its value",
         "lum_gina.dll wpnGina.dll msgina.dll",
         {{"lum_gina.dll", ""}},
         "lum_gina.dll wpnGina.dll msgina.dll",
         "lum_gina.dll wpnGina.dll msgina.dll"},
        {"the host was cut out",
         "lum_gina.dll wpnGina.dll msgina.dll",
         {{"Winlogon", "wpnGina.dll"}},
         "lum_gina.dll wpnGina.dll msgina.dll",
         "lum_gina.dll wpnGina.dll msgina.dll"},
        {"another terminator took the place of all",
         "lum_gina.dll wpnGina.dll msgina.dll",
         {{"Winlogon", "qslogon.dll"}},
         "lum_gina.dll wpnGina.dll qslogon.dll",
         "lum_gina.dll wpnGina.dll qslogon.dll"},
        {"an incompatible terminator took the place of all",
         "lum_gina.dll msgina.dll",
         {{"Winlogon", "incterm.dll"}},
         "lum_gina.dll msgina.dll",
         "lum_gina.dll msgina.dll"},
        {"GINAs were uninstalled and msgina.dll is left",
         "lum_gina.dll wpnGina.dll msgina.dll",
         {{"Winlogon", "msgina.dll"}, {"wpnGina.dll", ""}},
         "lum_gina.dll msgina.dll",
         "lum_gina.dll msgina.dll"},
        {"a GINA behind the host left by itself",
         "lum_gina.dll wpnGina.dll msgina.dll",
         {{"lum_gina.dll", "msgina.dll"}},
         "lum_gina.dll wpnGina.dll msgina.dll",
         "lum_gina.dll msgina.dll"},
        {"passthrough values lead in a circle",
         "lum_gina.dll wpnGina.dll msgina.dll",
         {{"wpnGina.dll", "lum_gina.dll"}},
         "lum_gina.dll msgina.dll",
         "lum_gina.dll msgina.dll"},
        {"an unknown GINA was the whole chain",
         "x.dll",
         {{"Winlogon", "msgina.dll"}},
         "x.dll...",
         "msgina.dll"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.szWhat);
        WriteRecords(RECORDS);
        Values values = ValuesOf(row.szOwn);
        SetValues(values);
        const auto own = Build();
        for (const auto& [name, next] : row.found) {
            values[name] = next;
        }
        SetValues(values);
        own->ResyncWithRegistry(*Build(true));
        EXPECT_EQ(row.szChain, ChainOf(*own));
        EXPECT_EQ(row.szValues, ChainOf(*Build(true)));
    }
}

TEST_F(Resync, LearnsTheRecordsThatWereNeeded)
{
    SetValues(ValuesOf("lum_gina.dll msgina.dll"));
    const auto own = Build();
    WriteRecords(RECORDS);
    SetValues(ValuesOf("rec.dll lum_gina.dll msgina.dll"));
    own->ResyncWithRegistry(*Build(true));
    EXPECT_TRUE(own->IsGinaKnown(TEXT("rec.dll")));
    EXPECT_TRUE(own->RemoveGinaFromChainingList(TEXT("rec.dll")));
    EXPECT_EQ("lum_gina.dll", GetValues()["Winlogon"]);
}

TEST_F(Resync, AnEndWhoseRecordWasNotLearnedIsReplaced)
{
    WriteRecords(RECORDS);
    SetValues(ValuesOf("rec.dll lum_gina.dll msgina.dll"));
    const auto own = Build();
    // As many records as the host has learned, though another one.
    SetValues(ValuesOf("lum_gina.dll wpnGina.dll PLinkGina.dll term.dll"));
    own->ResyncWithRegistry(*Build(true));
    EXPECT_EQ("lum_gina.dll wpnGina.dll PLinkGina.dll term.dll", ChainOf(*own));
    EXPECT_FALSE(own->IsGinaKnown(TEXT("term.dll")));
    SetString(WINLOGON_KEY, WINLOGON_GINA_DLL, TEXT("qslogon.dll"));
    own->ResyncWithRegistry(*Build(true));
    EXPECT_EQ("lum_gina.dll wpnGina.dll PLinkGina.dll qslogon.dll", ChainOf(*own));
}

} // namespace
