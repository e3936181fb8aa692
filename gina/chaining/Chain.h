#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ChainingRecord.h"

// What becomes of a chain of GINAs, decided over plain values: nothing here reads the registry, changes a
// list or reports. Null names are in no chain.

using CGinaName = std::basic_string<WCHAR>;
using CGinaNames = std::vector<CGinaName>;

/// What is known of a GINA; nothing when it is unknown.
using CKnowledge = std::function<std::optional<CChainingRecord>(const WCHAR* szGinaDLL)>;

/// How far a chain can be followed.
enum class ChainEnd
{
    Complete,      ///< to a GINA that ends it; an empty one is complete, too
    Unknown,       ///< to a GINA of which nothing is known
    NoPassthrough, ///< to a GINA that does not say what it passes through to
    Cycle,         ///< to a GINA that passes through to one before it, or to itself
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

/// Where Follow finds its way. know comes first for each GINA.
struct CChainSource
{
    CKnowledge know;
    /// What the GINA passes through to; empty when it does not say.
    std::function<CGinaName(const CChainingRecord& record)> read;
    /// The same after szPassthrough has been written there; empty when that did not help. None: write
    /// nothing.
    std::function<CGinaName(const WCHAR* szGinaDLL, const WCHAR* szPassthrough)> repair = {};
};

/// Follows a chain from the GINA that Winlogon loads, an empty name when it names none.
CChain Follow(const CChainSource& source, CGinaName gina);

/// Where a GINA comes in a chain.
enum class Place
{
    Nowhere,
    Only,   ///< into an empty chain
    Before, ///< before the GINA that was asked for
    /// The same, where that GINA is not in the chain, or would follow a terminator: it cannot be.
    NotBefore,
    First,
    Last,
    BeforeLast,
    InPlaceOfLast,
};

/// Where to insert a GINA: before szInsertBefore, or when that is null first with bAtFront, or else last,
/// where a terminator stays the end and gives way to another one. learn: what is known of the new GINA.
Place FindPlace(const CChain& chain, const CKnowledge& learn, const WCHAR* szGinaDLL,
                const WCHAR* szInsertBefore, bool bAtFront);

/// What a removal leaves: the chain without that GINA, and without an "msgina.dll" that would be left alone.
/// Nothing when it is refused; a GINA that is not in the chain leaves it as it is.
std::optional<CGinaNames> PlanRemoval(const CChain& chain, const WCHAR* szGinaDLL);

/// One value of a written chain, in texts of that chain.
struct CChainWrite
{
    const WCHAR* szGinaDLL; ///< whose passthrough value it is; null for Winlogon's GinaDLL
    const WCHAR* szText;    ///< null for a GINA's default; Winlogon's value is deleted then
};

/// What is written of a chain, first to last. GINAs that end chains or are unknown have no value to be
/// written. The other way round the machine comes up after each write, if it does before the first and after
/// the last.
std::vector<CChainWrite> ListWrites(const CGinaNames& ginas);
