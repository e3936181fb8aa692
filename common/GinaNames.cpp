#include "GinaNames.h"

#include <algorithm>

namespace {

// DLL names are compared as _wcsicmp does in the "C" locale: the same on every machine.
WCHAR FoldCase(WCHAR ch) noexcept
{
    return ch >= 'A' && ch <= 'Z' ? static_cast<WCHAR>(ch - 'A' + 'a') : ch;
}

} // namespace

bool EqualNames(const WCHAR* szLeft, const WCHAR* szRight) noexcept
{
    using Text = std::basic_string_view<WCHAR>;
    return szLeft != nullptr && szRight != nullptr && EqualNames(Text(szLeft), Text(szRight));
}

bool EqualNames(std::basic_string_view<WCHAR> left, std::basic_string_view<WCHAR> right) noexcept
{
    const auto equal = [](WCHAR chLeft, WCHAR chRight) { return FoldCase(chLeft) == FoldCase(chRight); };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), equal);
}
