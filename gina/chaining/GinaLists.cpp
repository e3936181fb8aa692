#include "GinaLists.h"

#include "MachineValue.h"
#include "GinaNames.h"
#include "KnownGinas.h"

COwned<CGinaChainingObject> MakeLink(const CMessageOrigin& origin, const WCHAR* szGinaDLL)
{
    return MakeOwned<CGinaChainingObject>(origin.szAPP, origin.szMTM, szGinaDLL);
}

bool InsertLink(CGinaChain& chain, Place place, const WCHAR* szGinaDLL, const WCHAR* szInsertBefore)
{
    switch (place) {
    case Place::Nowhere:
        return false;
    case Place::Only:
        break;
    case Place::Before:
    case Place::Refused:
        if (!chain.MoveTo(szInsertBefore) || place == Place::Refused) {
            return false;
        }
        break;
    case Place::First:
        chain.Begin();
        break;
    case Place::Last:
        Append(chain, MakeLink(chain, szGinaDLL));
        return true;
    case Place::BeforeLast:
        chain.End();
        break;
    case Place::InPlaceOfLast:
        chain.End();
        return chain.SetItem(MakeLink(chain, szGinaDLL));
    }
    COwned<CGinaChainingObject> pLink = MakeLink(chain, szGinaDLL);
    const bool bInserted = chain.Insert(pLink, 0);
    if (bInserted) {
        pLink.Release();
    }
    return bInserted;
}

void RemoveLink(CGinaChain& chain, std::size_t nAt)
{
    chain.m_pCursor = chain.m_pHead;
    for (; nAt != 0; --nAt) {
        chain.m_pCursor = chain.m_pCursor->pNext;
    }
    chain.Remove();
}

CGinaNames NamesOf(const CGinaChain& chain)
{
    CGinaNames ginas;
    for (const auto* pLink = chain.m_pHead; pLink != nullptr; pLink = pLink->pNext) {
        ginas.emplace_back(pLink->m_pItem->m_szGinaDLL);
    }
    return ginas;
}

void AddKnownGinas(CKnownGinaList& knownGinas)
{
    for (const auto& [szGinaDLL, record] : KNOWN_GINAS) {
        Append(knownGinas,
               MakeOwned<CGinaChainingInfoObject>(
                   knownGinas.szAPP, knownGinas.szMTM, szGinaDLL, record.szSubKey.data(),
                   record.szOldGinaDLLKey.data(), record.szDefaultGinaDLL.data(), record.bTerminator,
                   record.bStandalone, record.bMustBeFirst, record.bIsIncompatible));
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
