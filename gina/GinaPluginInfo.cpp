#include "GinaPluginInfo.h"

#include "Exceptions.h"
#include "GuardedText.h"
#include "Operation.h"
#include "Owned.h"
#include "guard/FaultGuard.h"

namespace {

constexpr WCHAR CLASS_NAME[] = TEXT("CGinaPluginInfo");
constexpr WCHAR VAR_GINA_DLL[] = TEXT("m_szGinaDLL");
constexpr WCHAR VAR_FRIENDLY_NAME[] = TEXT("m_szFriendlyName");

struct CLocalFree
{
    void operator()(WCHAR* szText) const noexcept { LocalFree(szText); }
};

} // namespace

CGinaPluginInfo::CGinaPluginInfo(const WCHAR* szAPPArg, const WCHAR* szMTMArg) noexcept
    : CGlobalObject(szAPPArg, szMTMArg), m_dwSpare1(0), m_szFriendlyName(nullptr), m_szGinaDLL(nullptr),
      m_dwWlxVersion(0), m_dwLUMVersion(0), m_dwSpare2(0)
{
    const CConstructionTrace trace(*this, CLASS_NAME);
}

CGinaPluginInfo::~CGinaPluginInfo()
{
    const CDestructionTrace trace(*this, CLASS_NAME);
    Release(m_szGinaDLL, VAR_GINA_DLL);
    Release(m_szFriendlyName, VAR_FRIENDLY_NAME);
}

CGinaPluginInfo& CGinaPluginInfo::operator=(const CGinaPluginInfo& other) noexcept
{
    const COperation op(*this, CLASS_NAME, TEXT("operator="));
    op.Run(Absorb<>(), [&] {
        if (this == &other) {
            return;
        }
        const auto copyText = [&](WCHAR*& szText, const WCHAR* szSource, const WCHAR* szVariable) {
            try {
                Replace(szText, szSource, szVariable);
            } catch (...) {
                Absorb<CMemAllocException, CWcscpyException>()(op);
            }
        };
        copyText(m_szGinaDLL, other.m_szGinaDLL, VAR_GINA_DLL);
        copyText(m_szFriendlyName, other.m_szFriendlyName, VAR_FRIENDLY_NAME);
        m_dwSpare1 = other.m_dwSpare1;
        m_dwWlxVersion = other.m_dwWlxVersion;
        m_dwLUMVersion = other.m_dwLUMVersion;
        m_dwSpare2 = other.m_dwSpare2;
    });
    return *this;
}

bool CGinaPluginInfo::SetGinaDLL(const WCHAR* szGinaDLL) noexcept
{
    const COperation op(*this, CLASS_NAME, TEXT("SetGinaDLL"));
    return op.Run(Absorb<CMemAllocException, CWcscpyException>(), [&] {
        Replace(m_szGinaDLL, szGinaDLL, VAR_GINA_DLL);
        return m_szGinaDLL != nullptr;
    });
}

void CGinaPluginInfo::Release(WCHAR*& szText, const WCHAR* szVariable) noexcept
{
    if (szText == nullptr) {
        return;
    }
    // A plugin may have allocated the text in another way.
    DeleteVariable(*this, szVariable, [&] {
        if (CallWithinHost([&] { return LocalFree(szText); }) != nullptr) {
            throw CForeignFault(GetLastError());
        }
    });
    szText = nullptr;
}

void CGinaPluginInfo::Replace(WCHAR*& szText, const WCHAR* szSource, const WCHAR* szVariable)
{
    Release(szText, szVariable);
    if (szSource == nullptr) {
        return;
    }
    const std::size_t cchSource = MeasureText(*this, szSource);
    COwned<WCHAR, CLocalFree> szCopy(
        static_cast<WCHAR*>(LocalAlloc(LMEM_FIXED, (cchSource + 1) * sizeof(WCHAR))));
    if (szCopy == nullptr) {
        throw CMemAllocException(*this, szVariable);
    }
    CopyToBuffer(*this, szCopy, szSource, cchSource);
    szText = szCopy.Release();
}
