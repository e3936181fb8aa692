#include "ChainResync.h"

#include <algorithm>

#include "GinaNames.h"

namespace {

const WCHAR* LastOf(const CChain& chain) noexcept
{
    return chain.ginas.back().c_str();
}

/// The first position at which two chains differ, or one of them has ended.
std::size_t FindDifference(const CChain& own, const CChain& found) noexcept
{
    const auto equal = [](const CGinaName& left, const CGinaName& right) { return EqualNames(left, right); };
    const auto difference =
        std::mismatch(own.ginas.begin(), own.ginas.end(), found.ginas.begin(), found.ginas.end(), equal);
    return static_cast<std::size_t>(difference.first - own.ginas.begin());
}

/// Whether the GINA that the registry has where the chains differ is recorded as incompatible.
bool IsIncompatible(const CKnowledge& know, const CChain& own, const CChain& found)
{
    const std::size_t nAt = FindDifference(own, found);
    const auto record = nAt < found.ginas.size() ? know(found.ginas[nAt].c_str()) : std::nullopt;
    return record && record->bIsIncompatible;
}

/// Whether the registry's chain breaks off at a GINA that lost its passthrough value, which its installer has
/// taken out. One that is unknown does not belong there.
bool HasLostPassthrough(const CChain& found)
{
    return !found.IsComplete() && !found.ginas.empty() && !EqualNames(LastOf(found), HOST_GINA) &&
           found.know(LastOf(found));
}

CResync RemoveLastOf(const CChain& broken, const CChain& own)
{
    return own.Has(LastOf(broken)) ? CResync{ResyncAction::Remove, LastOf(broken)}
                                   : CResync{ResyncAction::Write};
}

bool IsLonger(const CChain& left, const CChain& right) noexcept
{
    return left.ginas.size() > right.ginas.size();
}

/// The first row that applies is what happens.
struct CRow
{
    bool (*applies)(const CChain& own, const CChain& found);
    CResync (*decide)(const CChain& own, const CChain& found);
};

template <ResyncAction action>
CResync Just(const CChain&, const CChain&)
{
    return {action};
}

const CRow ROWS[] = {
    {[](const CChain& own, const CChain&) { return !own.IsComplete(); }, Just<ResyncAction::Nothing>},
    {[](const CChain&, const CChain& found) { return HasLostPassthrough(found); },
     [](const CChain& own, const CChain& found) { return RemoveLastOf(found, own); }},
    {[](const CChain&, const CChain& found) { return !found.IsComplete(); }, Just<ResyncAction::Write>},

    // The registry's chain has grown. The host comes first also when its chain has it already.
    {[](const CChain& own, const CChain& found) { return IsLonger(found, own) && !found.Has(HOST_GINA); },
     [](const CChain&, const CChain&) {
         return CResync{ResyncAction::Insert, HOST_GINA, Place::First};
     }},
    {[](const CChain& own, const CChain& found) {
         return IsLonger(found, own) && IsIncompatible(own.know, own, found);
     },
     Just<ResyncAction::Write>},
    {[](const CChain& own, const CChain& found) { return IsLonger(found, own); },
     Just<ResyncAction::TakeOver>},

    // It has lost GINAs. Where the host is among them, a look at what the chain would be with it tells
    // whether others are gone as well.
    {[](const CChain& own, const CChain& found) { return IsLonger(own, found) && found.Has(HOST_GINA); },
     Just<ResyncAction::Nothing>},
    {[](const CChain& own, const CChain& found) { return IsLonger(own, found); },
     Just<ResyncAction::FollowAgain>},

    // It is as long as the host's.
    {[](const CChain&, const CChain& found) { return !found.Has(HOST_GINA); }, Just<ResyncAction::Write>},
    {[](const CChain& own, const CChain& found) { return IsIncompatible(found.know, own, found); },
     [](const CChain& own, const CChain& found) {
         return CResync{ResyncAction::RemoveAt, nullptr, Place::Nowhere, FindDifference(own, found)};
     }},
    {[](const CChain&, const CChain&) { return true; }, Just<ResyncAction::Nothing>},
};

/// Where the registry's only GINA comes in the host's chain, whose end it is from now on.
Place PlaceEnd(const CChain& own, const CChainingRecord& end)
{
    if (!end.bTerminator) {
        return Place::BeforeLast;
    }
    const auto last = own.know(LastOf(own));
    return !last || last->bTerminator ? Place::InPlaceOfLast : Place::Last;
}

} // namespace

CResync Resync(const CChain& own, const CChain& found)
{
    return std::find_if(std::begin(ROWS), std::end(ROWS),
                        [&](const CRow& row) { return row.applies(own, found); })
        ->decide(own, found);
}

CResync ResyncCutOut(const CChain& own, const CChain& found, const CChain& again)
{
    if (!again.IsComplete()) {
        return RemoveLastOf(again, own);
    }
    if (found.ginas.size() != 1) {
        return {ResyncAction::Write};
    }
    const WCHAR* szEnd = LastOf(found);
    const auto end = own.know(szEnd);
    if (!end) {
        return {ResyncAction::Nothing};
    }
    return end->bIsIncompatible ? CResync{ResyncAction::Write}
                                : CResync{ResyncAction::Insert, szEnd, PlaceEnd(own, *end)};
}
