#pragma once

#include "ChainValues.h"
#include "LUMRegistry.h"
#include "WinlogonRegistry.h"
#include "chaining/RegistryManager.h"

/// The chain of a machine on which no host looks after it. To make one, and to ask it, writes nothing.
class COfflineChain
{
public:
    /// Throws CCommandError when the registry is not that of a machine, or closed to the user.
    COfflineChain();

    CRegistryManager& GetManager() { return m_manager; }
    CKnownGinaList& GetKnownGinas() { return *m_manager.m_pKnownGinaList; }

    /// Adds what a chaining record says to what is known. False when it is no record.
    bool Learn(const WideText& gina, const WideText& record);

    /// All values of which the chain consists, and of which one of GINAs that are known could consist, as the
    /// registry has them now. Throws CCommandError when one cannot be read.
    CChainValues ReadValues();

    /// Whether a host is in service, which takes changes that are not its own back.
    static bool IsHostInService();

private:
    CWinlogonRegistry m_winlogon;
    CLUMRegistry m_configuration;
    CRegistryManager m_manager;
};

/// Where Winlogon's GinaDLL lies.
CValuePlace WinlogonPlace();
/// Where the chaining record of a GINA lies.
CValuePlace RecordPlace(const WideText& gina);
/// Where a GINA keeps what it passes through to; nothing when it has no such value.
std::optional<CValuePlace> PassthroughPlace(const CGinaChainingInfoObject& info);
