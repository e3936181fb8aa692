#pragma once

#include "GinaLists.h"

class CWinlogonRegistry;

/// Goes through what a written chain says, in the order in which it is written: onWinlogon(szGinaDLL) for the
/// GINA that Winlogon loads, null when the chain is empty; then onGina(info, szGinaDLL) for what each GINA
/// that is known passes through to, null for a last one without a default.
template <typename OnWinlogon, typename OnGina>
void VisitChain(CKnownGinaList& knownGinas, const CGinaChain& chain, OnWinlogon onWinlogon, OnGina onGina)
{
    onWinlogon(chain.m_pHead != nullptr ? NameOf(*chain.m_pHead) : nullptr);
    for (const CGinaLink* pLink = chain.m_pHead; pLink != nullptr; pLink = pLink->pNext) {
        CGinaChainingInfoObject* pInfo = FindGina(knownGinas, NameOf(*pLink));
        if (pInfo != nullptr) {
            onGina(*pInfo, pLink->pNext != nullptr ? NameOf(*pLink->pNext) : pInfo->m_szDefaultGinaDLL);
        }
    }
}

/// Writes the chain to the registry, first to last: Winlogon's GinaDLL names the first GINA, each GINA's
/// passthrough value the one after it, that of the last its default. An empty chain leaves Winlogon without a
/// GinaDLL. What cannot be written is reported, and the rest is written all the same.
void WriteChain(CKnownGinaList& knownGinas, const CGinaChain& chain, CWinlogonRegistry& winlogonRegistry);
