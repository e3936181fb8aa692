#include "GlobalObject.h"

#include "Exceptions.h"

CGlobalObject::CGlobalObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg) noexcept
    : szAPP(szAPPArg), szMTM(szMTMArg)
{
    if (szAPPArg != nullptr && szMTMArg != nullptr) {
        return;
    }
    // Only reported: no object should fail to be made because it cannot be traced.
    CBadArgException({ERR_MESSAGE_APP, nullptr}, szAPPArg == nullptr ? TEXT("szAPP") : TEXT("szMTM"));
    szAPP = szAPPArg == nullptr ? ERR_MESSAGE_APP : nullptr;
    szMTM = nullptr;
}
