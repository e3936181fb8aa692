#pragma once

#include "Chain.h"
#include "GinaLists.h"
#include "GinaNames.h"

class CWinlogonRegistry;

/// Follows the chain of GINAs through the registry into a list, and reports what is wrong with it.
class CChainBuilder : private CPassthroughs
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
    std::optional<CChainingRecord> Know(const WCHAR* szGinaDLL);
    void Reach(const WCHAR* szGinaDLL) override;
    CGinaName Read(const CChainingRecord& record) override;
    CGinaName Repair(const WCHAR* szGinaDLL, const WCHAR* szPassthrough) override;

    CKnownGinaList& m_knownGinas;
    CGinaChain& m_chain;
    CWinlogonRegistry& m_winlogonRegistry;
    bool m_bNoRepair;
    /// What is known of the GINA that was asked for last.
    CGinaChainingInfoObject* m_pInfo;
    /// The name that the last GINA, or Winlogon, passes on to.
    WCHAR m_szCurrent[NAME_CAPACITY];
};
