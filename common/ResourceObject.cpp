#include "ResourceObject.h"

#include "Operation.h"
#include "RequireArgument.h"

CResourceObject::CResourceObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInst,
                                 WORD wLanguage, BYTE byFlag)
    : CGlobalObject(szAPPArg, szMTMArg), m_hInst(hInst), m_wUserLanguage(GetUserDefaultLangID()),
      m_wLanguage(wLanguage), m_byFlag(byFlag)
{
    const CConstructionTrace trace(*this, s_szClass);
    RequireArgument(*this, hInst, TEXT("hInst"));
}

CResourceObject::~CResourceObject()
{
    const CDestructionTrace trace(*this, s_szClass);
}

HRSRC CResourceObject::GetVersionResource(WORD wResource) noexcept
{
    const COperation op(*this, s_szClass, TEXT("GetVersionResource"));
    return op.Run(Absorb<CUnableToFindResourceException>(), [&] {
        const HRSRC hResource = FindResourceW(m_hInst, MAKEINTRESOURCE(wResource), RT_VERSION);
        if (hResource == nullptr) {
            throw CUnableToFindResourceException(*this, wResource, GetLastError());
        }
        return hResource;
    });
}

bool CResourceObject::LoadMenu(WORD wResource, VS_FIXEDFILEINFO** ppInfo) noexcept
{
    const COperation op(*this, s_szClass, TEXT("LoadMenu"));
    const auto body = [&] {
        const HRSRC hResource = GetVersionResource(wResource);
        if (hResource == nullptr) {
            return false;
        }
        void* pInfo = nullptr;
        UINT cbInfo = 0;
        if (!VerQueryValueW(LockVersion(hResource), TEXT("\\"), &pInfo, &cbInfo) || cbInfo < sizeof(**ppInfo))
        {
            return false;
        }
        *ppInfo = static_cast<VS_FIXEDFILEINFO*>(pInfo);
        return true;
    };
    return op.Run(Absorb<CUnableToFindResourceException>(), body, FailureWarning::Never);
}

void* CResourceObject::LockVersion(HRSRC hResource) const
{
    const HGLOBAL hLoaded = LoadResource(m_hInst, hResource);
    if (hLoaded == nullptr) {
        throw CLoadResourceException(*this, GetLastError());
    }
    void* pResource = LockResource(hLoaded);
    if (pResource == nullptr) {
        throw CLockResourceException(*this, GetLastError());
    }
    return pResource;
}
