#include "ChainView.h"

#include <algorithm>

#include "dll/DllTrouble.h"
#include "GinaNames.h"
#include "GinaStandardExports.h"
#include "chaining/KnownGinas.h"

namespace {

CLinkView LookAt(COfflineChain& chain, const CChainValues& values, const WideText& system,
                 const WideText& gina)
{
    CLinkView link;
    link.gina = gina;
    if (const std::optional<CChainingRecord> record = chain.Know(gina.c_str()); record) {
        link.knowledge = FindInTable(gina.c_str()) != nullptr ? Knowledge::Known : Knowledge::Recorded;
        link.bTerminator = record->bTerminator;
        link.bMustBeFirst = record->bMustBeFirst;
        link.bIsIncompatible = record->bIsIncompatible;
        link.place = PassthroughPlace(*record);
        link.passthrough = link.place ? Read(values, *link.place) : std::nullopt;
    }
    link.dll = InspectDll(chain.SpellingOf(gina).c_str(), system.c_str());
    if (link.dll.state == CDllFile::State::Usable) {
        // The host exports all that there is; of others nobody knows which version they agree on.
        link.missing = FindMissingExports(link.dll, CGinaStandardExports().m_Exports, link.IsHost());
    }
    return link;
}

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
    CChainView view;
    view.winlogon = values.Find(WinlogonPlace())->data;
    view.bInService = COfflineChain::IsHostInService();
    const CChain followed = chain.Follow(values);
    for (const CGinaName& gina : followed.ginas) {
        view.links.push_back(LookAt(chain, values, system, gina));
    }
    const bool bNoText = view.IsWinlogonNoText() || IsNoText(view.links.back().passthrough);
    view.end = bNoText ? ChainEnd::Unknown : followed.end;
    return view;
}
