#include "GuardedText.h"

#include "Exceptions.h"
#include "guard/FaultGuard.h"

namespace {

using Traits = std::char_traits<WCHAR>;

template <typename Body>
auto RunOnText(const CMessageOrigin& origin, CSourceLocation where, Body body)
{
    try {
        return GuardedCall(body);
    } catch (const CForeignFault&) {
        throw CWcscpyException(origin, where);
    }
}

} // namespace

std::size_t MeasureText(const CMessageOrigin& origin, const WCHAR* szText, CSourceLocation where)
{
    return RunOnText(origin, where, [=] { return Traits::length(szText); });
}

std::basic_string<WCHAR> ReadText(const CMessageOrigin& origin, const WCHAR* szText, CSourceLocation where)
{
    std::basic_string<WCHAR> text(MeasureText(origin, szText, where), 0);
    CopyToBuffer(origin, text.data(), szText, text.size(), where);
    return text;
}

void CopyToBuffer(const CMessageOrigin& origin, WCHAR* szBuffer, const WCHAR* szText, std::size_t cchText,
                  CSourceLocation where)
{
    RunOnText(origin, where, [=] {
        Traits::copy(szBuffer, szText, cchText);
        szBuffer[cchText] = 0;
    });
}
