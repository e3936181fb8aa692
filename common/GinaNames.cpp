#include "GinaNames.h"

#include <algorithm>

namespace {

// DLL names are compared as _wcsicmp does in the "C" locale: the same on every machine.
WCHAR FoldCase(WCHAR ch) noexcept
{
    return ch >= 'A' && ch <= 'Z' ? static_cast<WCHAR>(ch - 'A' + 'a') : ch;
}

using Text = std::basic_string_view<WCHAR>;

Text BareName(Text name) noexcept
{
    constexpr Text EXTENSION = TEXT(".dll");
    name.remove_prefix(name.find_last_of(TEXT("\\/:")) + 1);
    name.remove_prefix(std::min(name.find_first_not_of(TEXT(" \t\r\n")), name.size()));
    name = name.substr(0, name.find_last_not_of(TEXT(" \t\r\n.")) + 1);
    if (name.size() > EXTENSION.size() && EqualNames(name.substr(name.size() - EXTENSION.size()), EXTENSION))
    {
        name.remove_suffix(EXTENSION.size());
    }
    return name;
}

} // namespace

bool IsSameDll(std::basic_string_view<WCHAR> left, std::basic_string_view<WCHAR> right) noexcept
{
    return EqualNames(BareName(left), BareName(right));
}

bool EqualNames(const WCHAR* szLeft, const WCHAR* szRight) noexcept
{
    return szLeft != nullptr && szRight != nullptr && EqualNames(Text(szLeft), Text(szRight));
}

bool EqualNames(std::basic_string_view<WCHAR> left, std::basic_string_view<WCHAR> right) noexcept
{
    const auto equal = [](WCHAR chLeft, WCHAR chRight) { return FoldCase(chLeft) == FoldCase(chRight); };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), equal);
}
