#include "RegistryManager.h"

#include <functional>
#include <new>

#include "CallLocked.h"
#include "WinlogonRegistry.h"
#include "ChainBuilder.h"
#include "ChainResync.h"
#include "ChainWriter.h"
#include "EventLog.h"
#include "Exceptions.h"
#include "GinaNames.h"
#include "RequireArgument.h"

namespace {

/// Holds the locks of two managers. It always takes them in the order of their addresses, so two threads that
/// name them the other way round cannot deadlock.
class CBothLocks
{
public:
    CBothLocks(const CRegistryManager& left, const CRegistryManager& right) noexcept
        : m_first(Ordered(left, right) ? left.m_lock : right.m_lock),
          m_second(Ordered(left, right) ? right.m_lock : left.m_lock)
    {
    }

private:
    static bool Ordered(const CRegistryManager& left, const CRegistryManager& right) noexcept
    {
        return std::less<const CRegistryManager*>()(&left, &right);
    }

    const CCriticalSection::CLock m_first;
    const CCriticalSection::CLock m_second;
};

CGinaName Join(const CGinaNames& ginas)
{
    CGinaName text;
    for (const CGinaName& gina : ginas) {
        text.append(text.empty() ? TEXT("") : TEXT(", ")).append(gina);
    }
    return text;
}

void ReportPutRight(const CGinaNames& found, const CGinaChain& own) noexcept
{
    try {
        ReportHostEvent(HostEvent::ChainPutRight, {Join(found).c_str(), Join(NamesOf(own)).c_str()});
    } catch (...) {
        return;
    }
}

template <typename List>
COwned<List> MakeList(const CMessageOrigin& origin, const WCHAR* szMember)
{
    COwned<List> pList(new (std::nothrow) List(origin.szAPP, origin.szMTM));
    if (pList == nullptr) {
        throw CMemAllocException(origin, szMember);
    }
    return pList;
}

} // namespace

CRegistryManager::CRegistryManager(const WCHAR* szAPPArg, const WCHAR* szMTMArg, CLUMRegistry* pLUMRegistry,
                                   CWinlogonRegistry* pWinlogonRegistry, bool bNoRepair)
try : CGlobalObject(szAPPArg, szMTMArg), m_pWinlogonRegistry(pWinlogonRegistry), m_pLUMRegistry(pLUMRegistry),
    m_bChainIncomplete(false)
{
    const CConstructionTrace trace(*this, s_szClass);
    RequireArgument(*this, pWinlogonRegistry, TEXT("pWinlogonRegistry"));
    m_pKnownGinaList = MakeList<CKnownGinaList>(*this, TEXT("m_pKnownGinaList"));
    m_pGinaChainingList = MakeList<CGinaChain>(*this, TEXT("m_pGinaChainingList"));
    BuildLists(bNoRepair);
} catch (...) {
    FailConstruction<CRegistryManagerInitException, CBadArgException, CMemAllocException>(
        {szAPPArg, szMTMArg});
}

void CRegistryManager::BuildLists(bool bNoRepair)
{
    try {
        AddKnownGinas(*m_pKnownGinaList);
        m_bChainIncomplete =
            !BuildChain(*m_pKnownGinaList, *m_pGinaChainingList, *m_pWinlogonRegistry, bNoRepair);
    } catch (...) {
        ReportIf<CMessage>();
        CWarning(*this, ERR_UNHANDLED_EXCEPTION);
        throw CRegistryManagerInitException(*this);
    }
}

CRegistryManager::~CRegistryManager()
{
    const CDestructionTrace trace(*this, s_szClass);
    DeleteVariable(*this, TEXT("m_pKnownGinaList"), [this] { m_pKnownGinaList.Reset(); });
    DeleteVariable(*this, TEXT("m_pGinaChainingList"), [this] { m_pGinaChainingList.Reset(); });
}

template <typename Body>
bool CRegistryManager::RunChange(CTracePoint point, Body body) noexcept
{
    const COperation op(*this, s_szClass, point);
    return op.Run(
        Absorb<CMessage>(), [&] { return CallLocked(m_lock, body); }, FailureWarning::UnlessRaised);
}

bool CRegistryManager::InsertGinaIntoChainingList(const WCHAR* szGinaDLL, const WCHAR* szInsertBefore,
                                                  bool bAtFront) noexcept
{
    return RunChange(TEXT("InsertGinaIntoChainingList"), [&] {
        const auto need = [this](const WCHAR* szName) { return NeedKnown(szName).GetRecord(); };
        const Place place = FindPlace(GetChain(), need, szGinaDLL, szInsertBefore, bAtFront);
        const bool bInserted = InsertLink(*m_pGinaChainingList, place, szGinaDLL, szInsertBefore);
        if (bInserted) {
            WriteOutListToRegistry();
        }
        return bInserted;
    });
}

CChain CRegistryManager::GetChain() const
{
    const auto know = [this](const WCHAR* szGinaDLL) {
        const CGinaChainingInfoObject* pInfo = FindGina(*m_pKnownGinaList, szGinaDLL);
        return pInfo != nullptr ? std::optional(pInfo->GetRecord()) : std::nullopt;
    };
    return {NamesOf(*m_pGinaChainingList), m_bChainIncomplete ? ChainEnd::Incomplete : ChainEnd::Complete,
            know};
}

CGinaChainingInfoObject& CRegistryManager::NeedKnown(const WCHAR* szGinaDLL)
{
    CGinaChainingInfoObject* pInfo = FindGina(*m_pKnownGinaList, szGinaDLL);
    if (pInfo == nullptr) {
        pInfo = LearnGina(*m_pKnownGinaList, szGinaDLL);
    }
    if (pInfo == nullptr) {
        throw CCantInsertUnknownGinaException(LUM_GINA_ORIGIN);
    }
    return *pInfo;
}

bool CRegistryManager::RemoveGinaFromChainingList(const WCHAR* szGinaDLL) noexcept
{
    return RunChange(TEXT("RemoveGinaFromChainingList"), [&] {
        CGinaChain& chain = *m_pGinaChainingList;
        const std::optional<CGinaNames> left = PlanRemoval(GetChain(), szGinaDLL);
        if (!left || !chain.Remove(szGinaDLL)) {
            return false;
        }
        const bool bRemoved = chain.m_dwCount == left->size() || chain.Remove(SYSTEM_GINA);
        WriteOutListToRegistry();
        return bRemoved;
    });
}

template <typename Body>
bool CRegistryManager::RunQuery(CTracePoint point, Body body, FailureWarning warning) const noexcept
{
    const COperation op(*this, s_szClass, point);
    return op.Run(Absorb<CMessage>(), body, warning);
}

bool CRegistryManager::IsGinaInChainingList(const WCHAR* szGinaDLL) const noexcept
{
    const auto body = [&] { return m_pGinaChainingList->IsInList(szGinaDLL); };
    return RunQuery(
        TEXT("IsGinaInChainingList"), [&] { return CallLocked(m_lock, body); }, FailureWarning::UnlessRaised);
}

bool CRegistryManager::IsGinaKnown(const WCHAR* szGinaDLL) const noexcept
{
    const auto body = [&] { return m_pKnownGinaList->IsInList(szGinaDLL); };
    return RunQuery(
        TEXT("IsGinaKnown"), [&] { return CallLocked(m_lock, body); }, FailureWarning::UnlessRaised);
}

bool CRegistryManager::operator==(const CRegistryManager& other) const noexcept
{
    return RunQuery(
        TEXT("operator=="), [&] { return IsEqual(other); }, FailureWarning::UnlessRaised);
}

/// False means equal, which is normal and no failure to warn of. Chains that cannot be compared count as
/// different.
bool CRegistryManager::operator!=(const CRegistryManager& other) const noexcept
{
    const COperation op(*this, s_szClass, TEXT("operator!="));
    const auto body = [&] {
        try {
            return !IsEqual(other);
        } catch (...) {
            Absorb<CMessage>()(op);
            return true;
        }
    };
    return op.Run(Absorb<>(), body, FailureWarning::Never);
}

bool CRegistryManager::IsEqual(const CRegistryManager& other) const
{
    const CBothLocks locks(*this, other);
    return CallWithinHost([&] {
        return m_bChainIncomplete == other.m_bChainIncomplete &&
               *m_pGinaChainingList == *other.m_pGinaChainingList;
    });
}

void CRegistryManager::WriteOutListToRegistry() noexcept
{
    const COperation op(*this, s_szClass, TEXT("WriteOutListToRegistry"));
    const auto body = [this] {
        if (!m_bChainIncomplete) {
            WriteChain(*m_pKnownGinaList, *m_pGinaChainingList, *m_pWinlogonRegistry);
        }
    };
    op.Run(Absorb<CMessage>(), [&] { CallLocked(m_lock, body); });
}

void CRegistryManager::ResyncWithRegistry(const CRegistryManager& other) noexcept
{
    const COperation op(*this, s_szClass, TEXT("ResyncWithRegistry"));
    op.Run(Absorb<CMessage>(), [&] {
        const CBothLocks locks(*this, other);
        CallWithinHost([&] {
            LearnRecords(other);
            const CChain own = GetChain();
            const CChain found = other.GetChain();
            const CResync resync = Resync(own, found);
            const bool bCutOut = resync.action == ResyncAction::FollowAgain;
            if (bCutOut) {
                m_pWinlogonRegistry->SetGinaDLL(own.ginas.front().c_str());
                const CRegistryManager again(szAPP, szMTM, m_pLUMRegistry, m_pWinlogonRegistry, true);
                const CChain followed = again.GetChain();
                CarryOut(ResyncCutOut(own, found, followed), other);
            }
            if (bCutOut || CarryOut(resync, other)) {
                ReportPutRight(found.ginas, *m_pGinaChainingList);
            }
        });
    });
}

void CRegistryManager::LearnRecords(const CRegistryManager& other)
{
    CKnownGinaList& known = *m_pKnownGinaList;
    DWORD dwIndex = 0;
    for (const auto* pNode = other.m_pKnownGinaList->m_pHead; pNode != nullptr; pNode = pNode->pNext) {
        if (dwIndex++ >= known.m_dwCount) {
            Append(known, MakeOwned<CGinaChainingInfoObject>(known.szAPP, known.szMTM, pNode->m_pItem));
        }
    }
}

/// Whether the chain was to be written.
bool CRegistryManager::CarryOut(const CResync& resync, const CRegistryManager& other)
{
    CGinaChain& chain = *m_pGinaChainingList;
    switch (resync.action) {
    case ResyncAction::Nothing:
    case ResyncAction::FollowAgain:
        return false;
    case ResyncAction::TakeOver:
        TakeChainOver(*other.m_pGinaChainingList);
        return false;
    case ResyncAction::Write:
        break;
    case ResyncAction::Insert:
        if (!InsertLink(chain, resync.place, resync.szGinaDLL, nullptr)) {
            return false;
        }
        break;
    case ResyncAction::Remove:
        chain.Remove(resync.szGinaDLL);
        break;
    case ResyncAction::RemoveAt:
        RemoveLink(chain, resync.nAt);
        break;
    }
    WriteOutListToRegistry();
    return true;
}

/// If there is no memory for the copy, the chain stays as it is.
void CRegistryManager::TakeChainOver(const CGinaChain& chain)
{
    COwned<CGinaChain> pCopy = MakeOwned<CGinaChain>(szAPP, szMTM);
    if (pCopy->CopyList(chain)) {
        m_pGinaChainingList = std::move(pCopy);
    }
}
