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

/// The text as the library reads it; empty when there is none. The library reads no longer one than
/// LONGEST_NAME. It takes bytes of any type for one, but nothing is decided here by what is no text.
WideText TextOf(const CValueData& data);
/// 0 when it is no REG_DWORD.
DWORD NumberOf(const CValueData& data);
CValueData MakeText(const WCHAR* szText);
/// Whether it is more than the library reads: a name of more than LONGEST_NAME, whatever stands behind it.
bool IsTooLong(const CValueData& data);
CValueData MakeNumber(DWORD dwNumber);
/// Whether it exists and has the type of a text.
bool IsText(const CValueData& data);

/// For people: "HKEY_LOCAL_MACHINE\KEY", "NAME", and the data: a text in quotes with its
/// type if that is not REG_SZ, a number in decimal with its type, or
/// "(none)".
std::string DescribeKey(const CValuePlace& place);
std::string Describe(const CValuePlace& place);
std::string Describe(const CValueData& data);

/// These throw CCommandError. Writing no data deletes the value. A missing key is made only for a text.
CValueData ReadValue(const CValuePlace& place);
void WriteValue(const CValuePlace& place, const CValueData& data);
