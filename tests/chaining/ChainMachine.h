#pragma once

#include <map>
#include <memory>
#include <set>

#include "LUMRegistry.h"
#include "TestMachine.h"
#include "WinlogonRegistry.h"
#include "chaining/RegistryManager.h"

/// A machine on which GINAs can be chained. Chains are written as "lum_gina.dll wpnGina.dll msgina.dll"; one
/// that could not be followed to its end has "..." behind it.
class CChainMachine : public CTestMachine
{
protected:
    /// What the registry says: the name that each GINA passes through to, by the GINA's name, and under
    /// "Winlogon" the one that Winlogon loads. What has no value is not in it.
    using Values = std::map<std::string, std::string>;

    CChainMachine();
    ~CChainMachine() override;

    /// Makes the registry say this; values that are not in it are deleted.
    static void SetValues(const Values& values);
    static Values GetValues();
    /// The values of a chain of these GINAs, in which the last passes through to nothing.
    static Values ValuesOf(const std::string& chain);
    /// Makes the values lead through these GINAs; what the last passes through to stays.
    static void LeadThrough(const std::vector<std::string>& chain, Values& values);

    /// The name under which a value of this key stands among the values.
    static std::string OwnerOf(const std::string& key);

    /// Writes a chaining record, whose passthrough value is one that SetValues knows. szDefaultAndFlags:
    /// "msgina.dll,0,0,0,0".
    static void SetRecord(const char* szGinaDLL, const char* szDefaultAndFlags);

    /// What keeps the machine from coming up with these values, empty when it comes up. The host makes do
    /// with msgina.dll when it cannot load what follows it. missing: GINAs without a DLL.
    static std::string Boot(const Values& values, const std::set<std::string>& missing);

    /// Uninstalls all GINAs but the host.
    static void DeleteGinaKeys();

    /// The registries of a host that starts now.
    void StartHost();
    /// What a host, or with bNoRepair the registry monitor, reads from the registry.
    std::unique_ptr<CRegistryManager> Build(bool bNoRepair = false);

    static std::string ChainOf(const CRegistryManager& manager);

    std::unique_ptr<CWinlogonRegistry> m_pWinlogon;
    std::unique_ptr<CLUMRegistry> m_pConfiguration;
};

std::vector<std::string> SplitNames(const std::string& chain);
