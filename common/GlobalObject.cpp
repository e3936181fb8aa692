#include "GlobalObject.h"

#include "Exceptions.h"

CGlobalObject::CGlobalObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg) noexcept
    : szAPP(szAPPArg), szMTM(szMTMArg)
{
    if (szAPPArg != nullptr && szMTMArg != nullptr) {
        return;
    }
    // A constructor that failed here would take its class down with it over a matter of tracing.
    CBadArgException({ERR_MESSAGE_APP, nullptr}, szAPPArg == nullptr ? TEXT("szAPP") : TEXT("szMTM"));
    szAPP = szAPPArg == nullptr ? ERR_MESSAGE_APP : nullptr;
    szMTM = nullptr;
}
