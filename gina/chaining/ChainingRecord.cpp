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

/// Whether a number is not 0. It is read as _wtoi reads one: blanks, a sign, digits; what follows does not
/// count. A number may have any number of digits, so they are only compared with '0'.
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
    // C++ evaluates a braced list from left to right, so the fields are cut in their order.
    return CChainingRecord{CutText(record), CutText(record), CutText(record), CutFlag(record),
                           CutFlag(record), CutFlag(record), CutFlag(record)};
}
