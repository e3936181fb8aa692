#include "ChainView.h"

#include <algorithm>

#include "GinaNames.h"
#include "GinaStandardExports.h"
#include "chaining/KnownGinas.h"

namespace {

/// The host exports all that there is; of others nobody knows which version they agree on.
std::vector<std::string> FindMissingExports(const CDllFile& dll, bool bHost)
{
    const CGinaStandardExports exports;
    std::vector<std::string> missing;
    for (const CGinaExportBase* pExport = exports.m_Exports.m_pFirst; pExport != nullptr;
         pExport = pExport->m_pNext)
    {
        const bool bNeeded =
            bHost || (pExport->m_dwAboveVersion == 0 && pExport->m_missing == Missing::Fatal);
        if (bNeeded && !dll.HasExport(pExport->m_szName)) {
            missing.push_back(pExport->m_szName);
        }
    }
    return missing;
}

bool IsInTable(const WideText& gina)
{
    return std::any_of(std::begin(KNOWN_GINAS), std::end(KNOWN_GINAS),
                       [&](const CKnownGina& known) { return EqualNames(known.szGinaDLL, gina.c_str()); });
}

class CFollower
{
public:
    CFollower(COfflineChain& chain, const CChainValues& values, const WideText& system)
        : m_chain(chain), m_values(values), m_system(system)
    {
        m_view.winlogon = values.Find(WinlogonPlace())->data;
        m_view.bInService = COfflineChain::IsHostInService();
        WideText next = TextOf(m_view.winlogon);
        if (next.empty()) {
            next = SYSTEM_GINA;
        }
        bool bGoesOn = true;
        while (bGoesOn) {
            Append(next);
            next = TextOf(m_view.links.back().passthrough);
            bGoesOn = GoesOn(m_view.links.back(), next);
        }
    }

    CChainView m_view;

private:
    void Append(const WideText& gina)
    {
        CLinkView link;
        link.gina = gina;
        if (const CGinaChainingInfoObject* pInfo = Know(gina); pInfo != nullptr) {
            link.knowledge = IsInTable(gina) ? Knowledge::Known : Knowledge::Recorded;
            link.bTerminator = pInfo->m_bTerminator;
            link.bMustBeFirst = pInfo->m_bMustBeFirst;
            link.bIsIncompatible = pInfo->m_bIsIncompatible;
            link.place = PassthroughPlace(*pInfo);
            link.passthrough = link.place ? Read(*link.place) : std::nullopt;
        }
        link.dll = InspectDll(gina.c_str(), m_system.c_str());
        if (link.dll.state == CDllFile::State::Usable) {
            link.missing = FindMissingExports(link.dll, link.IsHost());
        }
        m_view.links.push_back(std::move(link));
    }

    const CGinaChainingInfoObject* Know(const WideText& gina)
    {
        const CGinaChainingInfoObject* pInfo = FindGina(m_chain.GetKnownGinas(), gina.c_str());
        return pInfo != nullptr ? pInfo : LearnGina(m_chain.GetKnownGinas(), gina.c_str());
    }

    /// A GINA of which has only been learned on the way has its value in the registry alone.
    CValueData Read(const CValuePlace& place) const
    {
        const CChainValue* pValue = m_values.Find(place);
        return pValue != nullptr ? pValue->data : ReadValue(place);
    }

    bool GoesOn(const CLinkView& last, const WideText& next)
    {
        if (last.bTerminator) {
            m_view.end = ChainEnd::Complete;
        } else if (last.knowledge == Knowledge::Unknown) {
            m_view.end = ChainEnd::Unknown;
        } else if (next.empty()) {
            m_view.end = ChainEnd::NoPassthrough;
        } else if (m_view.HasGina(next.c_str())) {
            m_view.end = ChainEnd::Cycle;
        } else {
            return true;
        }
        return false;
    }

    COfflineChain& m_chain;
    const CChainValues& m_values;
    const WideText& m_system;
};

} // namespace

bool CLinkView::IsHost() const
{
    return EqualNames(gina.c_str(), HOST_GINA);
}

bool CChainView::HasGina(const WCHAR* szGina) const
{
    return std::any_of(links.begin(), links.end(),
                       [&](const CLinkView& link) { return EqualNames(link.gina.c_str(), szGina); });
}

CChainView FollowChain(COfflineChain& chain, const CChainValues& values, const WideText& system)
{
    return std::move(CFollower(chain, values, system).m_view);
}
