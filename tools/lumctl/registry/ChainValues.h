#pragma once

#include <optional>
#include <string>
#include <vector>

#include "machine/Text.h"
#include "machine/RegFile.h"

/// Where a value lies.
struct CValuePlace
{
    WideText key; ///< below HKEY_LOCAL_MACHINE
    WideText name;

    /// Letter case does not count.
    bool operator==(const CValuePlace& other) const;
};

/// What a value says; nothing when it does not exist.
using CValueData = std::optional<Platform::CRegistryData>;

struct CChainValue
{
    CValuePlace place;
    CValueData data;
};

/// The values of which a chain consists, each place once.
class CChainValues
{
public:
    /// Null when it is not among them.
    const CChainValue* Find(const CValuePlace& place) const;
    /// Adds the place when it is not among them.
    void Set(const CValuePlace& place, const CValueData& data);

    auto begin() const { return m_values.begin(); }
    auto end() const { return m_values.end(); }

private:
    std::vector<CChainValue> m_values;
};

/// The text, also one that is too long for the host; empty for what is no text.
WideText TextOf(const CValueData& data);
/// 0 when it is no REG_DWORD.
DWORD NumberOf(const CValueData& data);
CValueData MakeText(const WCHAR* szText);
/// A text with the type of the text that it replaces, if that is one.
CValueData WithTypeOf(const CValueData& before, CValueData text);
CValueData MakeNumber(DWORD dwNumber);
/// Whether the host cannot read it: the data, with what stands behind the end of the text, is longer than a
/// name of LONGEST_NAME.
bool IsTooLong(const CValueData& data);
/// Whether it exists and has the type of a text.
bool IsText(const CValueData& data);
/// Whether it exists and has another type. The host takes such bytes for a text all the same; what others do
/// is not known.
bool IsNoText(const CValueData& data);

// For people.
/// HKEY_LOCAL_MACHINE\KEY
std::string DescribeKey(const CValuePlace& place);
/// HKEY_LOCAL_MACHINE\KEY, NAME
std::string Describe(const CValuePlace& place);
/// "TEXT", 5 (REG_DWORD), or (none) when it does not exist.
std::string Describe(const CValueData& data);

/// These throw CCommandError. Writing no data deletes the value. A missing key is made, unless the value
/// is deleted.
CValueData ReadValue(const CValuePlace& place);
void WriteValue(const CValuePlace& place, const CValueData& data);
/// Brings what was written in the hive of this place to the disk, where it outlasts a loss of power, if it
/// can.
void FlushKey(const CValuePlace& place);
