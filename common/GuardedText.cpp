#include "GuardedText.h"

#include <string>

#include "Exceptions.h"
#include "platform/FaultGuard.h"

std::size_t MeasureText(const CMessageOrigin& origin, const WCHAR* szText, CSourceLocation where)
{
    try {
        return GuardedCall([szText] { return std::char_traits<WCHAR>::length(szText); });
    } catch (const CForeignFault&) {
        throw CWcscpyException(origin, where);
    }
}
