#pragma once

#include "GlobalObject.h"
#include "Owned.h"

/// Reads resources of a loaded module. The module is not owned: keep it loaded as long as the object, or
/// anything that the object has handed out, is in use. For one thread at a time.
class CResourceObject : public CGlobalObject
{
public:
    /// The language and the flag are kept for callers that load a resource DLL by name; nothing does so yet.
    /// Throws CBadArgException for a null module.
    CResourceObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInst, WORD wLanguage,
                    BYTE byFlag);
    ~CResourceObject();
    CResourceObject(const CResourceObject&) = delete;
    CResourceObject& operator=(const CResourceObject&) = delete;

    /// The version resource with this identifier; null when there is none.
    HRSRC GetVersionResource(WORD wResource) noexcept;

    /// Stores a pointer to the fixed file information of a version resource. It points into the module itself
    /// and is not freed. False, with nothing stored, when there is none.
    bool LoadMenu(WORD wResource, VS_FIXEDFILEINFO** ppInfo) noexcept;

    HINSTANCE m_hInst;
    COwnedText m_szResourceDLL;
    LANGID m_wUserLanguage;
    WORD m_wLanguage;
    BYTE m_byFlag;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CResourceObject");

    void* LockVersion(HRSRC hResource) const;
};
