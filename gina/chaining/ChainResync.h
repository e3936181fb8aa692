#pragma once

#include "Chain.h"

// What the host's chain makes of the chain that the registry has now: it takes that over, or has itself
// written again. Decided over plain values, as in Chain.h.

enum class ResyncAction
{
    Nothing,
    Write,    ///< the host's chain as it is
    Insert,   ///< into the host's chain, and write it
    Remove,   ///< by name from the host's chain, and write it
    RemoveAt, ///< by position from the host's chain, and write it
    TakeOver, ///< the registry's chain becomes the host's; nothing is written
    /// Let Winlogon load the first GINA of the host's chain, follow the chain again, and ask ResyncCutOut.
    FollowAgain,
};

/// An action with what it needs: the GINA, in a text of one of the chains, and its place.
struct CResync
{
    ResyncAction action;
    const WCHAR* szGinaDLL = nullptr; ///< for Insert, Remove
    Place place = Place::Nowhere;     ///< for Insert
    std::size_t nAt = 0;              ///< for RemoveAt
};

/// own: the host's chain, with what the host knows. found: what the registry has now, with what was known
/// when that was read.
CResync Resync(const CChain& own, const CChain& found);

/// What comes next when the host has been cut out of Winlogon's chain. again: the chain with the first GINA
/// of the host's in front.
CResync ResyncCutOut(const CChain& own, const CChain& found, const CChain& again);
