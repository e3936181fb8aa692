#include "GinaLists.h"

#include "MachineValue.h"
#include "GinaNames.h"
#include "KnownGinas.h"

COwned<CGinaChainingObject> MakeLink(const CMessageOrigin& origin, const WCHAR* szGinaDLL)
{
    return MakeOwned<CGinaChainingObject>(origin.szAPP, origin.szMTM, szGinaDLL);
}

bool InsertLink(CGinaChain& chain, const WCHAR* szGinaDLL)
{
    COwned<CGinaChainingObject> pLink = MakeLink(chain, szGinaDLL);
    const bool bInserted = chain.Insert(pLink, 0);
    if (bInserted) {
        pLink.Release();
    }
    return bInserted;
}

bool ReplaceLast(CGinaChain& chain, const WCHAR* szGinaDLL)
{
    chain.End();
    return chain.SetItem(MakeLink(chain, szGinaDLL));
}

const WCHAR* NameOf(const CGinaLink& link) noexcept
{
    return link.m_pItem->m_szGinaDLL;
}

bool IsInChain(const CGinaChain& chain, const WCHAR* szGinaDLL) noexcept
{
    const CGinaLink* pLink = chain.m_pHead;
    while (pLink != nullptr && !EqualNames(NameOf(*pLink), szGinaDLL)) {
        pLink = pLink->pNext;
    }
    return pLink != nullptr;
}

void AddKnownGinas(CKnownGinaList& knownGinas)
{
    for (const CKnownGina& gina : KNOWN_GINAS) {
        Append(knownGinas, MakeOwned<CGinaChainingInfoObject>(
                               knownGinas.szAPP, knownGinas.szMTM, gina.szGinaDLL, gina.szSubKey,
                               gina.szOldGinaDLLKey, gina.szDefaultGinaDLL, gina.bTerminator,
                               gina.bStandalone, gina.bMustBeFirst, gina.bIsIncompatible));
    }
}

CGinaChainingInfoObject* FindGina(CKnownGinaList& knownGinas, const WCHAR* szGinaDLL)
{
    CGinaChainingInfoObject* pInfo = nullptr;
    return knownGinas.MoveTo(szGinaDLL) && knownGinas.GetItem(pInfo) ? pInfo : nullptr;
}

CGinaChainingInfoObject* LearnGina(CKnownGinaList& knownGinas, const WCHAR* szGinaDLL)
{
    try {
        const auto pRecord =
            OpenMachineValue<CRegistryString>(knownGinas, LUM_GINA_MTM, szGinaDLL, false, false);
        WCHAR szRecord[NAME_CAPACITY] = {};
        pRecord->GetRegistryString(szRecord, NAME_CAPACITY, true);
        return &Append(knownGinas, MakeOwned<CGinaChainingInfoObject>(knownGinas.szAPP, knownGinas.szMTM,
                                                                      szGinaDLL, szRecord));
    } catch (...) {
        if (!ReportIf<CUnableToOpenRegistryKeyException, CUnableToReadRegistryException, CBadArgException>())
        {
            throw;
        }
        return nullptr;
    }
}
