#pragma once

#include "GinaLists.h"
#include "GinaNames.h"

class CWinlogonRegistry;

/// Follows the chain of GINAs through the registry: from Winlogon's GinaDLL through each GINA's passthrough
/// value to a GINA that ends it.
class CChainBuilder
{
public:
    /// Builds into chain, which is empty. Chaining records that are needed on the way are added to
    /// knownGinas. bNoRepair: write nothing; otherwise a passthrough value that is missing is written.
    CChainBuilder(CKnownGinaList& knownGinas, CGinaChain& chain, CWinlogonRegistry& winlogonRegistry,
                  bool bNoRepair) noexcept;

    /// Whether the chain could be followed to its end; an empty one has reached it. Throws when there is no
    /// memory.
    bool Build();

private:
    bool AppendCurrent();
    bool AppendUnknown();
    bool RepairLast();
    void ReadPassthrough() noexcept;

    CKnownGinaList& m_knownGinas;
    CGinaChain& m_chain;
    CWinlogonRegistry& m_winlogonRegistry;
    bool m_bNoRepair;
    /// What is known of the last GINA of the chain.
    CGinaChainingInfoObject* m_pInfo;
    /// The name that the last GINA, or Winlogon, passes on to.
    WCHAR m_szCurrent[NAME_CAPACITY];
};
