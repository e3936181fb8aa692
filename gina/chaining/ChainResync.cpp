#include "ChainResync.h"

#include <algorithm>

#include "GinaNames.h"

namespace {

const WCHAR* LastOf(const CChain& chain) noexcept
{
    return chain.ginas.back().c_str();
}

/// The two chains that are compared.
struct CSides
{
    bool HasGrown() const noexcept { return found.ginas.size() > own.ginas.size(); }
    bool HasShrunk() const noexcept { return found.ginas.size() < own.ginas.size(); }
    bool HasHost() const noexcept { return found.Has(HOST_GINA); }

    /// The first position at which they differ, or at which one of them ends.
    std::size_t FindDifference() const noexcept
    {
        const auto equal = [](const CGinaName& l, const CGinaName& r) { return EqualNames(l, r); };
        return static_cast<std::size_t>(std::ranges::mismatch(own.ginas, found.ginas, equal).in1 -
                                        own.ginas.begin());
    }

    const CChain& own;
    const CChain& found;
};

/// Whether the GINA in the registry's chain at the first difference is recorded as incompatible.
bool IsIncompatible(const CSides& sides, const CKnowledge& know)
{
    const std::size_t nAt = sides.FindDifference();
    const auto record = nAt < sides.found.ginas.size() ? know(sides.found.ginas[nAt].c_str()) : std::nullopt;
    return record && record->bIsIncompatible;
}

/// Whether the registry's chain breaks off at a GINA that has lost its passthrough value, because an
/// uninstaller has deleted it. An unknown GINA does not count: the chain breaks off there for another reason.
bool HasLostPassthrough(const CChain& found)
{
    return !found.IsComplete() && !found.ginas.empty() && !EqualNames(LastOf(found), HOST_GINA) &&
           found.know(LastOf(found));
}

CResync RemoveLastOf(const CChain& broken, const CChain& own)
{
    return {own.Has(LastOf(broken)) ? ResyncAction::Remove : ResyncAction::Write, LastOf(broken)};
}

template <ResyncAction action>
CResync Just(const CSides&)
{
    return {action};
}

CResync InsertHost(const CSides&)
{
    return {ResyncAction::Insert, HOST_GINA, Place::First};
}

CResync RemoveDiffering(const CSides& sides)
{
    return {ResyncAction::RemoveAt, nullptr, Place::Nowhere, sides.FindDifference()};
}

using S = const CSides&;

/// The first row that applies is what happens.
const struct
{
    bool (*applies)(S s);
    CResync (*decide)(S s);
} ROWS[] = {
    {[](S s) { return !s.own.IsComplete(); }, Just<ResyncAction::Nothing>},
    {[](S s) { return HasLostPassthrough(s.found); }, [](S s) { return RemoveLastOf(s.found, s.own); }},
    {[](S s) { return !s.found.IsComplete(); }, Just<ResyncAction::Write>},
    // The host goes to the front, even if its own chain has it further back.
    {[](S s) { return s.HasGrown() && !s.HasHost(); }, InsertHost},
    {[](S s) { return s.HasGrown() && IsIncompatible(s, s.own.know); }, Just<ResyncAction::Write>},
    {[](S s) { return s.HasGrown(); }, Just<ResyncAction::TakeOver>},
    {[](S s) { return s.HasShrunk() && s.HasHost(); }, Just<ResyncAction::Nothing>},
    // The chain as followed from the host's first GINA tells whether others are gone as well.
    {[](S s) { return s.HasShrunk(); }, Just<ResyncAction::FollowAgain>},
    {[](S s) { return !s.HasHost(); }, Just<ResyncAction::Write>},
    {[](S s) { return IsIncompatible(s, s.found.know); }, RemoveDiffering},
    {[](S) { return true; }, Just<ResyncAction::Nothing>},
};

/// Where the registry's only GINA goes in the host's chain, to end it from now on.
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
    const CSides sides{own, found};
    return std::ranges::find_if(ROWS, [&](const auto& row) { return row.applies(sides); })->decide(sides);
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
