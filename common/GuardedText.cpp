#include "GuardedText.h"

#include <new>

#include "Exceptions.h"
#include "guard/FaultGuard.h"

namespace {

using Traits = std::char_traits<WCHAR>;

template <typename Body>
auto RunOnText(const CMessageOrigin& origin, CSourceLocation where, Body body)
{
    try {
        return CallWithinHost(body);
    } catch (const CForeignFault&) {
        throw CWcscpyException(origin, where);
    }
}

} // namespace

std::size_t MeasureText(const CMessageOrigin& origin, const WCHAR* szText, CSourceLocation where)
{
    return RunOnText(origin, where, [=] { return Traits::length(szText); });
}

void CopyToBuffer(const CMessageOrigin& origin, WCHAR* szBuffer, const WCHAR* szText, std::size_t cchText,
                  CSourceLocation where)
{
    RunOnText(origin, where, [=] {
        Traits::copy(szBuffer, szText, cchText);
        szBuffer[cchText] = 0;
    });
}

COwnedText CopyText(const CMessageOrigin& origin, std::basic_string_view<WCHAR> text, const WCHAR* szVariable,
                    CSourceLocation where)
{
    COwnedText copy(new (std::nothrow) WCHAR[text.size() + 1]);
    if (copy == nullptr) {
        throw CMemAllocException(origin, szVariable, where);
    }
    CopyToBuffer(origin, copy, text.data(), text.size(), where);
    return copy;
}

COwnedText CopyText(const CMessageOrigin& origin, const WCHAR* szText, const WCHAR* szVariable,
                    CSourceLocation where)
{
    return CopyText(origin, {szText, MeasureText(origin, szText, where)}, szVariable, where);
}
