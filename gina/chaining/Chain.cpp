#include "Chain.h"

#include <algorithm>

#include "GinaNames.h"

namespace {

CGinaNames::const_iterator Find(const CGinaNames& ginas, const WCHAR* szGinaDLL) noexcept
{
    return std::find_if(ginas.begin(), ginas.end(),
                        [=](const CGinaName& gina) { return EqualNames(gina.c_str(), szGinaDLL); });
}

/// What to write for a GINA whose passthrough value is missing: its default, or msgina.dll if it has none or
/// the chain has it already. A record may have an empty default: the chain then ends there, incomplete.
CGinaName ChooseRepair(const CChain& chain, const CChainingRecord& record)
{
    const CGinaName fallback(record.szDefaultGinaDLL);
    return record.szDefaultGinaDLL.data() == nullptr || chain.Has(fallback.c_str()) ? SYSTEM_GINA : fallback;
}

} // namespace

bool CChain::Has(const WCHAR* szGinaDLL) const noexcept
{
    return Find(ginas, szGinaDLL) != ginas.end();
}

CChain Follow(const CChainSource& source, CGinaName gina)
{
    CChain chain{{}, ChainEnd::Complete, source.know};
    while (!gina.empty()) {
        if (chain.Has(gina.c_str())) {
            chain.end = ChainEnd::Cycle;
            break;
        }
        const std::optional<CChainingRecord> record = source.know(gina.c_str());
        chain.ginas.push_back(std::move(gina));
        if (!record) {
            chain.end = ChainEnd::Unknown;
            break;
        }
        gina = source.read(*record);
        if (record->bTerminator) {
            break;
        }
        if (gina.empty() && source.repair) {
            gina = source.repair(chain.ginas.back().c_str(), ChooseRepair(chain, *record).c_str());
        }
        if (gina.empty()) {
            chain.end = ChainEnd::NoPassthrough;
        }
    }
    return chain;
}

Place FindPlace(const CChain& chain, const CKnowledge& learn, const WCHAR* szGinaDLL,
                const WCHAR* szInsertBefore, bool bAtFront)
{
    if (chain.ginas.empty()) {
        return Place::Only;
    }
    if (!chain.IsComplete() || chain.Has(szGinaDLL)) {
        return Place::Nowhere;
    }
    const std::optional<CChainingRecord> record = learn(szGinaDLL);
    if (!record) {
        return Place::Nowhere;
    }
    if (szInsertBefore != nullptr) {
        return chain.Has(szInsertBefore) && !record->bTerminator ? Place::Before : Place::Refused;
    }
    if (bAtFront) {
        return Place::First;
    }
    const std::optional<CChainingRecord> last = chain.know(chain.ginas.back().c_str());
    if (!last || !last->bTerminator) {
        return Place::Last;
    }
    return record->bTerminator ? Place::InPlaceOfLast : Place::BeforeLast;
}

std::optional<CGinaNames> PlanRemoval(const CChain& chain, const WCHAR* szGinaDLL)
{
    if (!chain.IsComplete() || !chain.know(szGinaDLL)) {
        return std::nullopt;
    }
    CGinaNames left = chain.ginas;
    const auto gone = Find(left, szGinaDLL);
    if (gone != left.end()) {
        left.erase(gone);
    }
    if (left.size() == 1 && EqualNames(left[0].c_str(), SYSTEM_GINA)) {
        left.clear();
    }
    return left;
}

std::vector<CChainWrite> ListWrites(const CGinaNames& ginas)
{
    std::vector<CChainWrite> writes;
    const WCHAR* szWriter = nullptr;
    for (const CGinaName& gina : ginas) {
        writes.push_back({szWriter, gina.c_str()});
        szWriter = gina.c_str();
    }
    writes.push_back({szWriter, nullptr});
    return writes;
}
