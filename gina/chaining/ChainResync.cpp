#include "ChainResync.h"

#include "WinlogonRegistry.h"
#include "KnownGinas.h"
#include "RegistryManager.h"

namespace {

bool IsIncompatible(CKnownGinaList& knownGinas, const CGinaLink* pLink)
{
    const CGinaChainingInfoObject* pInfo = pLink != nullptr ? FindGina(knownGinas, NameOf(*pLink)) : nullptr;
    return pInfo != nullptr && pInfo->m_bIsIncompatible;
}

} // namespace

CChainResync::CChainResync(CRegistryManager& own, const CRegistryManager& fresh) noexcept
    : m_own(own), m_fresh(fresh), m_chain(*own.m_pGinaChainingList), m_freshChain(*fresh.m_pGinaChainingList)
{
}

void CChainResync::Run()
{
    LearnRecords();
    if (m_own.m_bChainIncomplete) {
        return;
    }
    if (m_fresh.m_bChainIncomplete) {
        SettleIncomplete();
    } else if (m_chain.m_dwCount < m_freshChain.m_dwCount) {
        SettleLonger();
    } else if (m_chain.m_dwCount > m_freshChain.m_dwCount) {
        SettleShorter();
    } else {
        SettleEqualLength();
    }
}

void CChainResync::LearnRecords()
{
    CKnownGinaList& known = *m_own.m_pKnownGinaList;
    DWORD dwIndex = 0;
    for (const auto* pNode = m_fresh.m_pKnownGinaList->m_pHead; pNode != nullptr; pNode = pNode->pNext) {
        if (dwIndex++ >= known.m_dwCount) {
            Append(known, MakeOwned<CGinaChainingInfoObject>(known.szAPP, known.szMTM, pNode->m_pItem));
        }
    }
}

/// The registry's chain breaks off at its last GINA: one that lost its passthrough value has been taken out
/// by its installer, one that is unknown does not belong there.
void CChainResync::SettleIncomplete()
{
    const CGinaLink* pLast = m_freshChain.m_pTail;
    const bool bLostItsPassthrough = pLast != nullptr && !(*pLast->m_pItem == HOST_GINA) &&
                                     FindGina(*m_fresh.m_pKnownGinaList, NameOf(*pLast)) != nullptr;
    if (bLostItsPassthrough) {
        RemoveFromChain(*pLast);
    }
    m_own.WriteOutListToRegistry();
}

/// The registry's chain has grown.
void CChainResync::SettleLonger()
{
    if (!IsHostInFreshChain()) {
        // Also when the host's chain has it already.
        m_chain.Begin();
        if (InsertLink(m_chain, HOST_GINA)) {
            m_own.WriteOutListToRegistry();
        }
    } else if (IsIncompatible(*m_own.m_pKnownGinaList, FindDifference().pFresh)) {
        m_own.WriteOutListToRegistry();
    } else {
        TakeFreshChain();
    }
}

/// The registry's chain has lost GINAs. Where the host is among them, a look at what the chain would be with
/// it tells whether others are gone as well.
void CChainResync::SettleShorter()
{
    if (IsHostInFreshChain()) {
        return;
    }
    m_own.m_pWinlogonRegistry->SetGinaDLL(NameOf(*m_chain.m_pHead));
    const CRegistryManager again(m_own.szAPP, m_own.szMTM, m_own.m_pLUMRegistry, m_own.m_pWinlogonRegistry,
                                 true);
    if (again.m_bChainIncomplete) {
        RemoveFromChain(*again.m_pGinaChainingList->m_pTail);
        m_own.WriteOutListToRegistry();
    } else if (m_freshChain.m_dwCount != 1) {
        m_own.WriteOutListToRegistry();
    } else {
        TakeFreshEnd();
    }
}

void CChainResync::SettleEqualLength()
{
    const CDifference difference = FindDifference();
    if (!IsHostInFreshChain()) {
        m_own.WriteOutListToRegistry();
    } else if (IsIncompatible(*m_fresh.m_pKnownGinaList, difference.pFresh)) {
        m_chain.m_pCursor = difference.pOwn;
        m_chain.Remove();
        m_own.WriteOutListToRegistry();
    }
}

CChainResync::CDifference CChainResync::FindDifference() const
{
    CDifference difference{m_chain.m_pHead, m_freshChain.m_pHead};
    while (difference.pOwn != nullptr && difference.pFresh != nullptr &&
           *difference.pOwn->m_pItem == *difference.pFresh->m_pItem)
    {
        difference = {difference.pOwn->pNext, difference.pFresh->pNext};
    }
    return difference;
}

bool CChainResync::IsHostInFreshChain() const noexcept
{
    return IsInChain(m_freshChain, HOST_GINA);
}

/// A copy that memory does not suffice for must not take the place of the chain.
void CChainResync::TakeFreshChain()
{
    COwned<CGinaChain> pCopy = MakeOwned<CGinaChain>(m_chain.szAPP, m_chain.szMTM);
    if (pCopy->CopyList(m_freshChain)) {
        m_own.m_pGinaChainingList = std::move(pCopy);
    }
}

/// The registry's chain is one GINA, which ends the host's chain from now on.
void CChainResync::TakeFreshEnd()
{
    const CGinaChainingInfoObject* pEnd = FindGina(*m_own.m_pKnownGinaList, NameOf(*m_freshChain.m_pHead));
    if (pEnd == nullptr) {
        return;
    }
    if (pEnd->m_bIsIncompatible || PlaceEnd(*pEnd)) {
        m_own.WriteOutListToRegistry();
    }
}

bool CChainResync::PlaceEnd(const CGinaChainingInfoObject& end)
{
    const WCHAR* szGinaDLL = NameOf(*m_freshChain.m_pHead);
    if (!end.m_bTerminator) {
        m_chain.End();
        return InsertLink(m_chain, szGinaDLL);
    }
    const CGinaChainingInfoObject* pLast = FindGina(*m_own.m_pKnownGinaList, NameOf(*m_chain.m_pTail));
    if (pLast == nullptr || pLast->m_bTerminator) {
        return ReplaceLast(m_chain, szGinaDLL);
    }
    Append(m_chain, MakeLink(m_chain, szGinaDLL));
    return true;
}

void CChainResync::RemoveFromChain(const CGinaLink& link)
{
    if (IsInChain(m_chain, NameOf(link))) {
        m_chain.Remove(NameOf(link));
    }
}
