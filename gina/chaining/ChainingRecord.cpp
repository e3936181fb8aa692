#include "ChainingRecord.h"

#include <algorithm>

#include "GinaNames.h"

namespace {

using Text = CChainingRecord::Text;

constexpr WCHAR SEPARATOR = ',';
constexpr int SEPARATORS = 6;
constexpr WCHAR EMPTY_TEXT[] = TEXT("NULL");

Text CutField(Text& rest)
{
    const std::size_t cchField = std::min(rest.find(SEPARATOR), rest.size());
    const Text field = rest.substr(0, cchField);
    rest.remove_prefix(std::min(cchField + 1, rest.size()));
    return field;
}

Text CutText(Text& rest)
{
    const Text field = CutField(rest);
    return EqualNames(field, EMPTY_TEXT) ? field.substr(0, 0) : field;
}

/// Reads a number as _wtoi does: blanks, a sign, digits, and whatever follows does not count. Whether it is 0
/// is seen from its digits, however many there are.
bool CutFlag(Text& rest)
{
    Text number = CutField(rest);
    number.remove_prefix(std::min(number.find_first_not_of(TEXT(" \t\n\v\f\r")), number.size()));
    if (!number.empty() && (number.front() == '-' || number.front() == '+')) {
        number.remove_prefix(1);
    }
    const Text digits = number.substr(0, number.find_first_not_of(TEXT("0123456789")));
    return digits.find_first_not_of('0') != Text::npos;
}

} // namespace

std::optional<CChainingRecord> ParseChainingRecord(Text record) noexcept
{
    if (std::count(record.begin(), record.end(), SEPARATOR) != SEPARATORS) {
        return std::nullopt;
    }
    // The fields of a braced list are cut in the order in which they stand.
    return CChainingRecord{CutText(record), CutText(record), CutText(record), CutFlag(record),
                           CutFlag(record), CutFlag(record), CutFlag(record)};
}
