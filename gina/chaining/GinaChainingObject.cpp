#include "GinaChainingObject.h"

#include "GinaNames.h"
#include "GuardedText.h"
#include "RequireArgument.h"

namespace {

COwnedText CopyName(const CMessageOrigin& origin, const WCHAR* szGinaDLL, const WCHAR* szArgument)
{
    RequireArgument(origin, szGinaDLL != nullptr && *szGinaDLL != 0, szArgument);
    return CopyText(origin, szGinaDLL, TEXT("m_szGinaDLL"));
}

const WCHAR* NameOf(const CMessageOrigin& origin, const CGinaChainingObject* pGinaChainingObject)
{
    RequireArgument(origin, pGinaChainingObject, TEXT("pGinaChainingObject"));
    return pGinaChainingObject->m_szGinaDLL;
}

} // namespace

/// What both constructors do.
template <typename GetName>
void CGinaChainingObject::TakeName(GetName getName)
{
    const CConstructionTrace trace(*this, s_szClass);
    try {
        m_szGinaDLL = getName();
    } catch (...) {
        FailConstruction<CGinaChainingObjectInitException, CBadArgException>(LUM_GINA_ORIGIN);
    }
}

CGinaChainingObject::CGinaChainingObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, const WCHAR* szGinaDLL)
    : CGlobalObject(szAPPArg, szMTMArg)
{
    TakeName([&] { return CopyName(*this, szGinaDLL, TEXT("szGinaDLL")); });
}

CGinaChainingObject::CGinaChainingObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg,
                                         const CGinaChainingObject* pGinaChainingObject)
    : CGlobalObject(szAPPArg, szMTMArg)
{
    TakeName([&] {
        return CopyName(*this, NameOf(*this, pGinaChainingObject), TEXT("pGinaChainingObject->szGinaDLL"));
    });
}

CGinaChainingObject::~CGinaChainingObject()
{
    const CDestructionTrace trace(*this, s_szClass);
}

bool CGinaChainingObject::IsNamed(const WCHAR* szClass, CTracePoint point,
                                  const WCHAR* szGinaDLL) const noexcept
{
    const COperation op(*this, szClass, point);
    return op.Run(
        Absorb<>(), [&] { return EqualNames(m_szGinaDLL, szGinaDLL); }, FailureWarning::Never);
}

bool CGinaChainingObject::operator==(const WCHAR* szGinaDLL) const noexcept
{
    return IsNamed(s_szClass, TEXT("operator=="), szGinaDLL);
}

bool CGinaChainingObject::operator==(const CGinaChainingObject& other) const noexcept
{
    return IsNamed(s_szClass, TEXT("operator=="), other.m_szGinaDLL);
}
