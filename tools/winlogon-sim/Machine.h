#pragma once

#include <vector>

#include "Options.h"
#include "machine/RegistryFile.h"

/// The machine on which the day is lived: its registry, from the first setting to the last step.
class CMachine
{
public:
    /// Loads the registry when a file is named and exists, then the setup, and writes the settings that the
    /// options ask for. Of a start of many, the setup comes before the first, and what the restart of a
    /// machine forgets is forgotten. Throws CSetupError.
    explicit CMachine(const COptions& options);

    /// Throws CSetupError on a machine that has a chain of GINAs of its own or a host in service: a day would
    /// change them. Call it before there is a CMachine.
    static void RequireUnused();

    /// The plugins that the library's configuration names now, in their order.
    static std::vector<std::string> GetPlugins();

    /// The DLL that the library is going to pass its calls to: what its configuration names, or what it falls
    /// back to.
    const std::string& GetStandin() const { return m_standin; }

    /// Saves the registry when a file is named. Throws CSetupError.
    void Save() const { m_registry.Save(); }

private:
    CRegistryFile m_registry;
    std::string m_standin;
};
