#pragma once

#include <deque>

#include "registry/ChainValues.h"
#include "chaining/Chain.h"

/// Reads the chain of a machine on which no host looks after it, and what is known of its GINAs. Writes
/// nothing.
class COfflineChain
{
public:
    /// Throws CCommandError when the registry is not that of a machine, or closed to the user.
    COfflineChain();

    /// Whether the registry is that of a machine. Throws CCommandError when it is closed to the user, and
    /// would look like that of a machine without a chain.
    static bool HasWinlogonKey();
    /// Throws CCommandError also when it is not.
    static void RequireWinlogonKey();

    /// Whether it has a configuration of the host.
    static bool HasOwnKey();

    /// What is known of a GINA, from the built-in table or from a chaining record. A record that the registry
    /// has is learned by that. The texts live as long as this object.
    std::optional<CChainingRecord> Know(const WCHAR* szGinaDLL);

    /// Adds what a chaining record says to what is known, unless the GINA is known or it is no record.
    void Learn(const WideText& gina, const WideText& record);

    /// Reads all values of the chain, and those of every known GINA that is not in it. Throws CCommandError
    /// when one cannot be read.
    CChainValues ReadValues();

    /// Follows the chain that the values make. Its names are those of the files that are loaded. Without a
    /// GinaDLL in Winlogon's key it is the system's own GINA. The value of a GINA that is learned on the way
    /// is read from the registry.
    CChain Follow(const CChainValues& values);

    /// How a value spells the name of a loaded file, for example with its directory, in the first chain that
    /// was followed. The file's own name when no value spells it in another way.
    WideText SpellingOf(const WideText& gina) const;

    /// Where a value of a written chain lies; nothing for a GINA that has none.
    std::optional<CValuePlace> PlaceOf(const CChainWrite& write);
    /// The data to write there, with names spelled as before. Nothing: delete the value, since the GINA has
    /// no default, or Winlogon names no GINA.
    CValueData DataOf(const CChainWrite& write);

    /// Whether a host is in service, which is never so on another machine than this one. It would take back a
    /// change that it has not made itself.
    static bool IsHostInService();

private:
    const CChainingRecord* Find(const WCHAR* szGinaDLL) const;

    struct CLearned
    {
        WideText gina;
        WideText text; ///< of which the record's texts are parts
        CChainingRecord record;
    };
    /// Grows at its end only, so that texts stay where they are.
    std::deque<CLearned> m_learned;
    /// Names that are not those of files.
    std::vector<WideText> m_spellings;
};

/// Where Winlogon's GinaDLL lies.
CValuePlace WinlogonPlace();
/// Where the chaining record of a GINA lies.
CValuePlace RecordPlace(const WideText& gina);
/// Where a GINA keeps what it passes through to; nothing when it has no such value.
std::optional<CValuePlace> PassthroughPlace(const CChainingRecord& record);
/// What a value says: in the values, or when it is not among them, in the registry.
CValueData Read(const CChainValues& values, const CValuePlace& place);
