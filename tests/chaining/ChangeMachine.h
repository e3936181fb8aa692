#pragma once

#include <functional>

#include "ChainMachine.h"

/// A machine on which the host's chain changes, in one table for all that can happen to it.
class CChangeMachine : public CChainMachine
{
protected:
    struct CRow
    {
        const char* szBefore; ///< the chain that the host reads
        /// "insert NAME [first | before NAME]", "remove NAME" ("-" is null); "record NAME=DATA" as SetRecord;
        /// "resync [NAME=NEXT ...]" after others have written these passthrough values. Several with ", ".
        const char* szChange;
        const char* szAfter;              ///< the host's chain; null when the last change is refused
        const char* szRegistry = nullptr; ///< the registry's chain then; null for the same
        /// What keeps the machine from coming up when it stops after so many writes of the last change.
        std::vector<std::string> unsafe = {};
        std::set<std::string> missing = {}; ///< GINAs whose DLL is gone
    };
    static const std::vector<CRow> ROWS;

    /// Makes the machine and all changes but the last, which it gives.
    std::function<bool()> Prepare(const CRow& row);

    std::unique_ptr<CRegistryManager> m_pManager;
    /// What the host's own value names on machines whose chain is without it; empty for no value.
    std::string m_stale;

private:
    std::function<bool()> MakeChange(const std::vector<std::string>& words);

    std::unique_ptr<CRegistryManager> m_pFresh;
};
