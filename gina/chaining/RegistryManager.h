#pragma once

#include "CriticalSection.h"
#include "GinaLists.h"

class CLUMRegistry;
class CWinlogonRegistry;
struct CResync;

/// The chain of GINAs that Winlogon loads, as an ordered list: read from the registry, changed, and written
/// back (see BuildChain, WriteChain). What becomes of it is decided in Chain.h and
/// ChainResync.h; this object locks, reads, asks, and carries the decision out on its lists.
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

    /// Inserts a GINA and writes the chain: into an empty chain; otherwise before szInsertBefore, or when
    /// that is null as the first with bAtFront, or else as the last that the terminator allows, which another
    /// terminator replaces. False, and no change, for a GINA that is in the chain or unknown, a place that
    /// does not exist or that is before another GINA for a terminator, and while the chain is incomplete.
    bool InsertGinaIntoChainingList(const WCHAR* szGinaDLL, const WCHAR* szInsertBefore,
                                    bool bAtFront) noexcept;

    /// Removes a GINA and writes the chain; an "msgina.dll" that is left alone goes, too. False, and no
    /// change, for a GINA that is not in the chain or unknown, and while the chain is incomplete.
    bool RemoveGinaFromChainingList(const WCHAR* szGinaDLL) noexcept;

    bool IsGinaInChainingList(const WCHAR* szGinaDLL) const noexcept;
    bool IsGinaKnown(const WCHAR* szGinaDLL) const noexcept;

    /// Writes the chain, unless it is incomplete.
    void WriteOutListToRegistry() noexcept;

    /// Whether both have the same chain; letter case does not count.
    bool operator==(const CRegistryManager& other) const noexcept;
    bool operator!=(const CRegistryManager& other) const noexcept;

    /// Comes to terms with what others have made of the chain: other is what the registry says now, built
    /// with bNoRepair, and differs (see ChainResync.h). Hold m_lock from before other is built: a change of
    /// the chain in between would be taken for somebody else's.
    void ResyncWithRegistry(const CRegistryManager& other) noexcept;

    /// The built-in table, then what has been learned from chaining records.
    COwned<CKnownGinaList> m_pKnownGinaList;
    /// The chain; its first GINA is the one that Winlogon loads.
    COwned<CGinaChain> m_pGinaChainingList;
    CWinlogonRegistry* m_pWinlogonRegistry;
    CLUMRegistry* m_pLUMRegistry;
    /// The chain could not be followed to its end; it is never changed or written then. Set once, when the
    /// object is made.
    bool m_bChainIncomplete;
    /// Over both lists and their cursors; held for no longer than the registry takes. It comes before the
    /// locks of the two registries. The registry monitor holds it from before it builds the manager to
    /// compare with, which no other thread has.
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
    void CarryOut(const CResync& resync, const CRegistryManager& other);
    void TakeChainOver(const CGinaChain& chain);
};
