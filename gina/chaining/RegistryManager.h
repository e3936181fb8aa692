#pragma once

#include "CriticalSection.h"
#include "GinaLists.h"

class CLUMRegistry;
class CWinlogonRegistry;
struct CResync;

/// The chain of GINAs that Winlogon loads, as an ordered list: read from the registry, changed, and written
/// back (see BuildChain, WriteChain). Chain.h and ChainResync.h decide what becomes of it. This object locks,
/// reads, asks them, and carries the decision out on its lists.
///
/// Operations never throw, report what fails, and may be called from all threads.
class CRegistryManager : public CGlobalObject
{
public:
    /// Builds both lists from the registry. The two registries are not owned and must outlive the object.
    /// bNoRepair: write nothing while reading the chain. Throws CBadArgException for a null registry,
    /// CMemAllocException when there is no memory for a list, CRegistryManagerInitException for any other
    /// failure.
    CRegistryManager(const WCHAR* szAPPArg, const WCHAR* szMTMArg, CLUMRegistry* pLUMRegistry,
                     CWinlogonRegistry* pWinlogonRegistry, bool bNoRepair);
    ~CRegistryManager();
    CRegistryManager(const CRegistryManager&) = delete;
    CRegistryManager& operator=(const CRegistryManager&) = delete;

    /// Inserts a GINA and writes the chain. The GINA goes into an empty chain; otherwise before
    /// szInsertBefore if that is given, first with bAtFront, or last. A terminator stays last and is replaced
    /// only by another one. False, without change, for a GINA that is in the chain or unknown, for a
    /// szInsertBefore that is not in the chain, for a terminator that is to go before another GINA, and while
    /// the chain is incomplete.
    bool InsertGinaIntoChainingList(const WCHAR* szGinaDLL, const WCHAR* szInsertBefore,
                                    bool bAtFront) noexcept;

    /// Removes a GINA and writes the chain. If only "msgina.dll" would be left, it goes too. False, without
    /// change, for a GINA that is not in the chain or unknown, and while the chain is incomplete.
    bool RemoveGinaFromChainingList(const WCHAR* szGinaDLL) noexcept;

    bool IsGinaInChainingList(const WCHAR* szGinaDLL) const noexcept;
    bool IsGinaKnown(const WCHAR* szGinaDLL) const noexcept;

    /// Writes the chain, unless it is incomplete.
    void WriteOutListToRegistry() noexcept;

    /// Whether both have the same chain, ignoring case.
    bool operator==(const CRegistryManager& other) const noexcept;
    bool operator!=(const CRegistryManager& other) const noexcept;

    /// Resynchronises with what others have made of the chain (see ChainResync.h). other: what the registry
    /// says now, built with bNoRepair, and different. Hold m_lock from before other is built: a change of the
    /// host's own in between would be taken for somebody else's.
    void ResyncWithRegistry(const CRegistryManager& other) noexcept;

    /// The built-in table, then what has been learned from chaining records.
    COwned<CKnownGinaList> m_pKnownGinaList;
    /// The chain; its first GINA is the one that Winlogon loads.
    COwned<CGinaChain> m_pGinaChainingList;
    CWinlogonRegistry* m_pWinlogonRegistry;
    CLUMRegistry* m_pLUMRegistry;
    /// True if the chain could not be followed to its end: then it is never changed or written. Set once,
    /// when the object is made.
    bool m_bChainIncomplete;
    /// Guards both lists and their cursors. Held only as long as reading or writing the registry takes, and
    /// taken before the locks of the two registries. The registry monitor takes it before it builds the
    /// manager to compare with, which no other thread has.
    mutable CCriticalSection m_lock;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CRegistryManager");

    void BuildLists(bool bNoRepair);
    template <typename Body>
    bool RunChange(CTracePoint point, Body body) noexcept;
    template <typename Body>
    bool RunQuery(CTracePoint point, Body body, FailureWarning warning) const noexcept;
    bool IsEqual(const CRegistryManager& other) const;

    CChain GetChain() const;
    CGinaChainingInfoObject& NeedKnown(const WCHAR* szGinaDLL);
    void LearnRecords(const CRegistryManager& other);
    bool CarryOut(const CResync& resync, const CRegistryManager& other);
    void TakeChainOver(const CGinaChain& chain);
};
