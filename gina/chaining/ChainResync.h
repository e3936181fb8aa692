#pragma once

#include "GinaLists.h"

class CRegistryManager;

/// What the host's chain makes of the chain that the registry has now: it takes that over, or writes itself
/// back. The two managers are locked by the caller.
class CChainResync
{
public:
    CChainResync(CRegistryManager& own, const CRegistryManager& fresh) noexcept;

    /// Throws as the operations that it consists of.
    void Run();

private:
    /// Where two chains part; null where one has ended.
    struct CDifference
    {
        CGinaLink* pOwn;
        CGinaLink* pFresh;
    };

    void LearnRecords();
    void SettleIncomplete();
    void SettleLonger();
    void SettleShorter();
    void SettleEqualLength();

    CDifference FindDifference() const;
    bool IsHostInFreshChain() const noexcept;
    void TakeFreshChain();
    void TakeFreshEnd();
    bool PlaceEnd(const CGinaChainingInfoObject& end);
    void RemoveFromChain(const CGinaLink& link);

    CRegistryManager& m_own;
    const CRegistryManager& m_fresh;
    CGinaChain& m_chain;
    CGinaChain& m_freshChain;
};
