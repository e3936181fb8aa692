#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ChainingRecord.h"

// Decides what becomes of a chain of GINAs, from plain values. Nothing here knows a registry, a list, a lock
// or a log: what is known of a GINA is asked of the caller. A null name is in no chain.

using CGinaName = std::basic_string<WCHAR>;
using CGinaNames = std::vector<CGinaName>;

/// Looks up what is known of a GINA: nothing for an unknown one.
using CKnowledge = std::function<std::optional<CChainingRecord>(const WCHAR* szGinaDLL)>;

/// How far a chain can be followed.
enum class ChainEnd
{
    Complete,      ///< to a GINA that ends it; an empty chain is complete too
    Unknown,       ///< to a GINA of which nothing is known
    NoPassthrough, ///< to a GINA that does not say what it passes through to
    Cycle,         ///< to a GINA that passes through to one before it, or to itself
    Incomplete,    ///< one of the last three; which one was reported when the chain was read
};

/// A chain: Winlogon loads the first GINA, each GINA the one after it.
struct CChain
{
    /// A chain that is not complete is never changed or written.
    bool IsComplete() const noexcept { return end == ChainEnd::Complete; }
    bool Has(const WCHAR* szGinaDLL) const noexcept;

    CGinaNames ginas;
    ChainEnd end = ChainEnd::Complete;
    CKnowledge know;
};

/// What Follow asks on its way. It asks know first for each GINA.
struct CChainSource
{
    CKnowledge know;
    /// What the GINA passes through to; empty when it does not say.
    std::function<CGinaName(const CChainingRecord& record)> read;
    /// Writes szPassthrough as the passthrough value and reads it again; empty when that did not help. Not
    /// set: nothing is written.
    std::function<CGinaName(const WCHAR* szGinaDLL, const WCHAR* szPassthrough)> repair = {};
};

/// Follows a chain from the GINA that Winlogon loads. The name is empty if Winlogon names none.
CChain Follow(const CChainSource& source, CGinaName gina);

/// Where a GINA comes in a chain.
enum class Place
{
    Nowhere,
    Only,   ///< as the only one: the chain is empty
    Before, ///< before the GINA that was asked for
    /// Refused: the GINA to insert before is not in the chain, or the new one is a terminator, behind which
    /// nothing is loaded.
    Refused,
    First,
    Last,
    BeforeLast,
    InPlaceOfLast,
};

/// Where to insert a GINA: before szInsertBefore if that is given, otherwise first with bAtFront, otherwise
/// last. A terminator stays last: the new GINA goes before it, or takes its place if it is a terminator too.
/// learn: looks up what is known of the new GINA.
Place FindPlace(const CChain& chain, const CKnowledge& learn, const WCHAR* szGinaDLL,
                const WCHAR* szInsertBefore, bool bAtFront);

/// The chain that a removal leaves: without that GINA, and empty if only "msgina.dll" would be left. Nothing
/// when the removal is refused. A GINA that is not in the chain leaves the chain as it is.
std::optional<CGinaNames> PlanRemoval(const CChain& chain, const WCHAR* szGinaDLL);

/// One value to write. The texts are those of the chain.
struct CChainWrite
{
    const WCHAR* szGinaDLL; ///< whose passthrough value it is; null for Winlogon's GinaDLL
    const WCHAR* szText;    ///< null for a GINA's default; Winlogon's value is deleted then
};

/// The values to write for a chain, from Winlogon's to that of the last GINA. Terminators and unknown GINAs
/// have no value: skip theirs. Write them last to first, and the machine can start after each write, if it
/// can before the first and after the last.
std::vector<CChainWrite> ListWrites(const CGinaNames& ginas);
