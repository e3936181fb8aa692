#include "RegistryKey.h"

#include "Exceptions.h"
#include "GuardedText.h"
#include "Operation.h"
#include "RequireArgument.h"

namespace {

constexpr WCHAR TXT_ALREADY_CLOSED[] = TEXT("Unable to close the registry key because it is already closed");

} // namespace

CRegistryKey::CRegistryKey(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HKEY hKeyRoot, const WCHAR* szSubKey,
                           REGSAM samDesired, bool bCreate, bool bOpenNow, DWORD dwOptions)
    : CGlobalObject(szAPPArg, szMTMArg), m_hKeyRoot(hKeyRoot), m_samDesired(samDesired),
      m_dwOptions(dwOptions), m_hKey(nullptr), m_bCreate(bCreate), m_bOpen(false)
{
    const CConstructionTrace trace(*this, s_szClass);
    try {
        RequireArgument(*this, szSubKey, TEXT("szSubKey"));
        m_szSubKey = CopyText(*this, szSubKey, TEXT("m_szSubKey"));
        if (bOpenNow && !OpenKey()) {
            throw CRegistryKeyInitException(*this);
        }
    } catch (...) {
        FailConstruction<CRegistryKeyInitException, CBadArgException, CUnableToOpenRegistryKeyException,
                         CUnableToCreateRegistryKeyException>(*this);
    }
}

CRegistryKey::~CRegistryKey()
{
    const CDestructionTrace trace(*this, s_szClass);
    if (m_bOpen) {
        DeleteVariable(*this, TEXT("m_hKey"), [this] { CloseKey(); });
    }
}

LONG CRegistryKey::TryOpen()
{
    const LONG lResult = RegOpenKeyExW(m_hKeyRoot, m_szSubKey, 0, m_samDesired, &m_hKey);
    if (lResult != ERROR_SUCCESS) {
        m_hKey = nullptr;
    }
    return lResult;
}

bool CRegistryKey::OpenKey()
{
    using Handler = Handlers<PassOn<CUnableToOpenRegistryKeyException, CUnableToCreateRegistryKeyException>,
                             Absorb<CUnableToCloseRegistryKeyException>>;
    const COperation op(*this, s_szClass, TEXT("OpenKey"));
    return op.Run(
        Handler(),
        [&] {
            if (m_bOpen) {
                CloseKey();
            }
            LONG lResult = TryOpen();
            if ((lResult == ERROR_FILE_NOT_FOUND || lResult == ERROR_INVALID_HANDLE) && m_bCreate) {
                if (!CreateKey()) {
                    return false;
                }
                lResult = TryOpen();
            }
            if (lResult != ERROR_SUCCESS) {
                throw CUnableToOpenRegistryKeyException(*this, m_szSubKey, lResult);
            }
            m_bOpen = true;
            return true;
        },
        FailureWarning::UnlessRaised);
}

bool CRegistryKey::CreateKey()
{
    using Handler =
        Handlers<PassOn<CUnableToCreateRegistryKeyException>, Absorb<CUnableToCloseRegistryKeyException>>;
    const COperation op(*this, s_szClass, TEXT("CreateKey"));
    return op.Run(
        Handler(),
        [&] {
            if (m_bOpen && !CloseKey()) {
                return false;
            }
            const LONG lResult = RegCreateKeyExW(m_hKeyRoot, m_szSubKey, 0, nullptr, m_dwOptions,
                                                 m_samDesired, nullptr, &m_hKey, nullptr);
            if (lResult != ERROR_SUCCESS) {
                m_hKey = nullptr;
                throw CUnableToCreateRegistryKeyException(*this, m_szSubKey, lResult);
            }
            m_bOpen = true;
            return CloseKey();
        },
        FailureWarning::UnlessRaised);
}

bool CRegistryKey::IsUsable() const noexcept
{
    return m_bOpen &&
           RegQueryValueExW(m_hKey, nullptr, nullptr, nullptr, nullptr, nullptr) != ERROR_KEY_DELETED;
}

bool CRegistryKey::CloseKey()
{
    const COperation op(*this, s_szClass, TEXT("CloseKey"));
    return op.Run(
        PassOn<CUnableToCloseRegistryKeyException>(),
        [&] {
            if (!m_bOpen) {
                op.Warn(TXT_ALREADY_CLOSED);
                return true;
            }
            const LONG lResult = RegCloseKey(m_hKey);
            if (lResult != ERROR_SUCCESS) {
                throw CUnableToCloseRegistryKeyException(*this, m_szSubKey, lResult);
            }
            m_hKey = nullptr;
            m_bOpen = false;
            return true;
        },
        FailureWarning::UnlessRaised);
}
