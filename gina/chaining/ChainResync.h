#pragma once

#include "Chain.h"

// Decides what happens when the registry's chain differs from the host's: the host takes it over, or has its
// own written again. Works on plain values, as Chain.h does.

enum class ResyncAction
{
    Nothing,
    Write,    ///< the host's chain as it is
    Insert,   ///< into the host's chain, and write it
    Remove,   ///< by name from the host's chain, and write it
    RemoveAt, ///< by position from the host's chain, and write it
    TakeOver, ///< the registry's chain becomes the host's; nothing is written
    /// Write the first GINA of the host's chain to Winlogon's GinaDLL, follow the chain again, and ask
    /// ResyncCutOut.
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

/// own: the host's chain, with what the host knows. found: the registry's chain, with what was known when it
/// was read.
CResync Resync(const CChain& own, const CChain& found);

/// Decides what follows FollowAgain, when the host has been cut out of Winlogon's chain. again: the chain as
/// followed from the first GINA of the host's.
CResync ResyncCutOut(const CChain& own, const CChain& found, const CChain& again);
