#include "CompareNames.h"

namespace {

// DLL names are compared as _wcsicmp does in the "C" locale: the same on every machine.
WCHAR FoldCase(WCHAR ch) noexcept
{
    return ch >= 'A' && ch <= 'Z' ? static_cast<WCHAR>(ch - 'A' + 'a') : ch;
}

} // namespace

bool EqualNames(const WCHAR* szLeft, const WCHAR* szRight) noexcept
{
    if (szLeft == nullptr || szRight == nullptr) {
        return false;
    }
    while (*szLeft != 0 && FoldCase(*szLeft) == FoldCase(*szRight)) {
        ++szLeft;
        ++szRight;
    }
    return FoldCase(*szLeft) == FoldCase(*szRight);
}
