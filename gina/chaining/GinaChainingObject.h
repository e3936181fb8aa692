#pragma once

#include "GlobalObject.h"
#include "Operation.h"
#include "Owned.h"

/// One link of a chain of GINAs: the file name of a GINA's DLL.
class CGinaChainingObject : public CGlobalObject
{
public:
    /// Both throw CBadArgException when there is no name, CGinaChainingObjectInitException for any other
    /// failure.
    CGinaChainingObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, const WCHAR* szGinaDLL);
    CGinaChainingObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg,
                        const CGinaChainingObject* pGinaChainingObject);
    ~CGinaChainingObject();
    CGinaChainingObject(const CGinaChainingObject&) = delete;
    CGinaChainingObject& operator=(const CGinaChainingObject&) = delete;

    /// Whether the names are equal, ignoring case. A null name equals nothing.
    bool operator==(const WCHAR* szGinaDLL) const noexcept;
    bool operator==(const CGinaChainingObject& other) const noexcept;

    /// Never empty.
    COwnedText m_szGinaDLL;

protected:
    bool IsNamed(const WCHAR* szClass, CTracePoint point, const WCHAR* szGinaDLL) const noexcept;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CGinaChainingObject");

    template <typename GetName>
    void TakeName(GetName getName);
};
