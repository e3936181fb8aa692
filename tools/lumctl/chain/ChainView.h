#pragma once

#include "registry/ChainValues.h"
#include "dll/DllSearch.h"
#include "OfflineChain.h"
#include "machine/DllFile.h"

/// How it is known what a GINA does.
enum class Knowledge
{
    Known,    ///< by the built-in table
    Recorded, ///< by a chaining record
    Unknown,
};

/// One GINA of a chain.
struct CLinkView
{
    WideText gina; ///< the name of the file that is loaded
    Knowledge knowledge = Knowledge::Unknown;
    bool bTerminator = false;
    bool bMustBeFirst = false;
    bool bIsIncompatible = false;
    std::optional<CValuePlace> place; ///< of its passthrough value
    CValueData passthrough;
    CDllFile dll;
    /// The exports that it must have and has not.
    std::vector<std::string> missing;

    bool IsHost() const;
};

/// A chain as it runs: Winlogon loads the first GINA, each GINA the one after it.
struct CChainView
{
    CValueData winlogon; ///< its GinaDLL
    /// Never empty: when Winlogon names no GINA it loads the system's own, which is the only one here then.
    std::vector<CLinkView> links;
    /// Unknown also when the last value on the way is no text.
    ChainEnd end = ChainEnd::Complete;
    /// Whether a host is in service on the machine: then the chain is changed through it.
    bool bInService = false;

    bool HasGina(const WCHAR* szGina) const;
    bool IsSystemGinaImplied() const { return TextOf(winlogon).empty(); }
    /// What Winlogon makes of that is not known; here it counts as naming no GINA.
    bool IsWinlogonNoText() const { return IsNoText(winlogon); }
};

/// The chain that the values make, whether the registry has them already or not. system: where DLLs are
/// looked for, see InspectDll.
CChainView FollowChain(COfflineChain& chain, const CChainValues& values, const WideText& system);

const char* NameOf(ChainEnd end);

/// Prints a line for each GINA, how the chain ends, and where DLLs were looked for if that is in doubt.
void PrintChain(const CChainView& view, const CDllSearch& search, std::string& output);
void PrintChainJson(const CChainView& view, const CDllSearch& search, std::string& output);
