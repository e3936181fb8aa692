#pragma once

#include <deque>

#include "ChainValues.h"
#include "chaining/Chain.h"

/// What is known of the GINAs of a machine on which no host looks after the chain, and the values of which
/// the chain consists. Writes nothing.
class COfflineChain
{
public:
    /// Throws CCommandError when the registry is not that of a machine, or closed to the user.
    COfflineChain();

    /// What the built-in table says of a GINA, or a chaining record: one that was learned, or that the
    /// registry has, which is learned then. The texts live as long as this object.
    std::optional<CChainingRecord> Know(const WCHAR* szGinaDLL);

    /// Adds what a chaining record says to what is known, unless the GINA is known or it is no record.
    void Learn(const WideText& gina, const WideText& record);

    /// All values of which the chain consists, and of which one of GINAs that are known could consist, as the
    /// registry has them now. Throws CCommandError when one cannot be read.
    CChainValues ReadValues();

    /// The chain that the values make, of the names of the files that are loaded; when Winlogon names no
    /// GINA, the system's own. A GINA that has only been learned of on the way has its value in the registry
    /// alone.
    CChain Follow(const CChainValues& values);

    /// How the values of the chain that was followed first name a file that is loaded, such as with its
    /// directory; the file's name when none does.
    WideText SpellingOf(const WideText& gina) const;

    /// Where a value of a written chain lies; nothing for a GINA that has none.
    std::optional<CValuePlace> PlaceOf(const CChainWrite& write);
    /// What is written there, with names as they were spelled; nothing where a GINA has no default, and
    /// Winlogon is left without a GINA.
    CValueData DataOf(const CChainWrite& write);

    /// Whether a host is in service, which takes changes that are not its own back.
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
