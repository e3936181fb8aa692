#include "ChainMachine.h"

#include <sstream>

#include "GinaNames.h"

namespace {

constexpr WCHAR RECORDED_KEY[] = TEXT("SOFTWARE\\ORX\\Test");

// Where each GINA keeps its passthrough value.
struct CPassthrough
{
    const char* szGinaDLL;
    const WCHAR* szKey;
    const WCHAR* szValue;
} const PASSTHROUGHS[] = {
    {"Winlogon", WINLOGON_KEY, TEXT("GinaDLL")},
    {"wpnGina.dll", TEXT("SOFTWARE\\Tamsin\\Airlink\\wpnGina"), TEXT("OldGinaDLL")},
    {"PLinkGina.dll", TEXT("SOFTWARE\\ORX\\PortLink\\PLinkGina"), TEXT("OldGinaDLL")},
    {"BVGina01.DLL", TEXT("SOFTWARE\\Brevik Systems\\Gina"), TEXT("GinaDLL")},
    {"lum_gina.dll", OWN_KEY, TEXT("GinaDLL")},
    {"kvs_gina.dll", TEXT("SOFTWARE\\ORX\\KVS\\Gina"), TEXT("GinaDLL")},
    {"rec.dll", RECORDED_KEY, TEXT("rec.dll")},
    {"inc.dll", RECORDED_KEY, TEXT("inc.dll")},
    {"nodef.dll", RECORDED_KEY, TEXT("nodef.dll")},
    {"turned.dll", RECORDED_KEY, TEXT("turned.dll")},
};

const std::set<std::string> TERMINATORS = {"msgina.dll", "qslogon.dll", "term.dll", "incterm.dll"};

// Bottom up, since a key with subkeys cannot be deleted.
const WCHAR* const GINA_KEYS[] = {
    TEXT("SOFTWARE\\Tamsin\\Airlink\\wpnGina"),
    TEXT("SOFTWARE\\Tamsin\\Airlink"),
    TEXT("SOFTWARE\\Tamsin"),
    TEXT("SOFTWARE\\ORX\\PortLink\\PLinkGina"),
    TEXT("SOFTWARE\\ORX\\PortLink"),
    TEXT("SOFTWARE\\ORX\\KVS\\Gina"),
    TEXT("SOFTWARE\\ORX\\KVS"),
    TEXT("SOFTWARE\\Brevik Systems\\Gina"),
    TEXT("SOFTWARE\\Brevik Systems"),
    RECORDED_KEY,
};

/// Null for a GINA without such a value.
const CPassthrough* FindPassthrough(const std::string& name)
{
    for (const CPassthrough& row : PASSTHROUGHS) {
        if (EqualNames(Widen(row.szGinaDLL).c_str(), Widen(name).c_str())) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

CChainMachine::CChainMachine()
{
    DeleteGinaKeys();
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, WINLOGON_KEY);
    SetString(WINLOGON_KEY, TEXT("Shell"), TEXT("Explorer.exe"));
    // What is missing on such a machine fills the log, and writing it takes most of the time under Wine.
    SetTraceMask(0);
    StartHost();
    DeleteValue(OWN_KEY, TEXT("Debug"));
}

CChainMachine::~CChainMachine()
{
    m_pConfiguration.reset();
    m_pWinlogon.reset();
    DeleteGinaKeys();
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, WINLOGON_KEY);
}

void CChainMachine::DeleteGinaKeys()
{
    for (const WCHAR* szKey : GINA_KEYS) {
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, szKey);
    }
}

void CChainMachine::SetValues(const Values& values)
{
    for (const CPassthrough& row : PASSTHROUGHS) {
        const auto found = values.find(row.szGinaDLL);
        if (found != values.end()) {
            SetString(row.szKey, row.szValue, Widen(found->second).c_str());
        } else {
            DeleteValue(row.szKey, row.szValue);
        }
    }
}

CChainMachine::Values CChainMachine::GetValues()
{
    Values values;
    for (const CPassthrough& row : PASSTHROUGHS) {
        const std::string quoted = GetValue(row.szKey, row.szValue);
        if (quoted != "(none)") {
            values[row.szGinaDLL] = quoted.substr(1, quoted.size() - 2);
        }
    }
    return values;
}

CChainMachine::Values CChainMachine::ValuesOf(const std::string& chain)
{
    Values values;
    LeadThrough(SplitNames(chain), values);
    return values;
}

void CChainMachine::LeadThrough(const std::vector<std::string>& chain, Values& values)
{
    const CPassthrough* pFrom = PASSTHROUGHS;
    for (const std::string& name : chain) {
        if (pFrom != nullptr) {
            values[pFrom->szGinaDLL] = name;
        }
        pFrom = FindPassthrough(name);
    }
}

std::string CChainMachine::OwnerOf(const std::string& key)
{
    const CPassthrough* pRow = PASSTHROUGHS;
    for (; Narrow(pRow->szKey) != key; ++pRow) {
    }
    return pRow->szGinaDLL;
}

void CChainMachine::SetRecord(const char* szGinaDLL, const char* szDefaultAndFlags)
{
    const std::string record = std::string("SOFTWARE\\ORX\\Test,") + szGinaDLL + "," + szDefaultAndFlags;
    SetString(OWN_KEY, Widen(szGinaDLL).c_str(), Widen(record).c_str());
}

void CChainMachine::StartHost()
{
    m_pWinlogon = std::make_unique<CWinlogonRegistry>(LUM_GINA_APP, LUM_GINA_MTM);
    m_pConfiguration = std::make_unique<CLUMRegistry>(LUM_GINA_APP, LUM_GINA_MTM);
}

std::unique_ptr<CRegistryManager> CChainMachine::Build(bool bNoRepair)
{
    return std::make_unique<CRegistryManager>(LUM_GINA_APP, LUM_GINA_MTM, m_pConfiguration.get(),
                                              m_pWinlogon.get(), bNoRepair);
}

std::string CChainMachine::ChainOf(const CRegistryManager& manager)
{
    std::string chain;
    for (const CGinaName& gina : NamesOf(*manager.m_pGinaChainingList)) {
        chain += (chain.empty() ? "" : " ") + Narrow(gina.c_str());
    }
    return manager.m_bChainIncomplete ? chain + "..." : chain;
}

std::string CChainMachine::Boot(const Values& values, const std::set<std::string>& missing)
{
    std::set<std::string> loaded;
    std::string from = "Winlogon";
    std::string next = values.count(from) != 0 ? values.at(from) : "msgina.dll";
    while (TERMINATORS.count(next) == 0 || missing.count(next) != 0) {
        if (missing.count(next) != 0 || FindPassthrough(next) == nullptr) {
            return from == "lum_gina.dll" ? "" : from + " loads " + (next.empty() ? "nothing" : next);
        }
        if (!loaded.insert(next).second) {
            // The host does not load itself. Of a loop that is longer, not every GINA may bear the end.
            return from == next && next == "lum_gina.dll" ? "" : from + " loads " + next;
        }
        from = next;
        next = values.count(from) != 0 ? values.at(from) : "";
    }
    return "";
}

std::vector<std::string> SplitNames(const std::string& chain)
{
    std::istringstream text(chain);
    std::vector<std::string> names;
    for (std::string name; text >> name;) {
        names.push_back(name);
    }
    return names;
}
