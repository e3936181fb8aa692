#include "RegistryDword.h"

#include "Exceptions.h"
#include "Operation.h"
#include "RequireArgument.h"

CRegistryDword::CRegistryDword(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HKEY hKeyRoot,
                               const WCHAR* szSubKey, const WCHAR* szValueName, REGSAM samDesired,
                               bool bCreate, bool bOpenNow, bool bReadThrough, bool bWriteThrough,
                               bool bReadNow, DWORD dwOptions)
try : CRegistryValue(szAPPArg, szMTMArg, hKeyRoot, szSubKey, szValueName, samDesired, bCreate, bOpenNow,
                     bReadThrough, bWriteThrough, dwOptions),
    m_dwValue(0)
{
    const CConstructionTrace trace(*this, s_szClass);
    DWORD dwScratch = 0;
    if (bReadNow && !GetRegistryDword(&dwScratch, true)) {
        throw CRegistryDwordInitException(*this);
    }
} catch (...) {
    FailConstruction<CRegistryDwordInitException, CBadArgException, CUnableToOpenRegistryKeyException,
                     CUnableToCreateRegistryKeyException, CUnableToReadRegistryException>(
        {szAPPArg, szMTMArg});
}

CRegistryDword::~CRegistryDword()
{
    const CDestructionTrace trace(*this, s_szClass);
}

bool CRegistryDword::GetRegistryDword(DWORD* pdwValue, bool bRefresh)
{
    const COperation op(*this, s_szClass, TEXT("GetRegistryDword"));
    return op.Run(
        PassOn<CBadArgException, CUnableToReadRegistryException>(),
        [&] {
            RequireArgument(*this, pdwValue, TEXT("pdwValue"));
            if (bRefresh || m_bReadThrough) {
                Fetch();
            }
            *pdwValue = m_dwValue;
            return true;
        },
        FailureWarning::UnlessRaised);
}

bool CRegistryDword::SetRegistryDword(DWORD dwValue, bool bForceWrite)
{
    const COperation op(*this, s_szClass, TEXT("SetRegistryDword"));
    return op.Run(
        PassOn<CUnableToWriteRegistryException>(),
        [&] {
            m_dwValue = dwValue;
            if (bForceWrite || m_bWriteThrough) {
                Flush();
            }
            return true;
        },
        FailureWarning::UnlessRaised);
}

bool CRegistryDword::ReadRegistry()
{
    const COperation op(*this, s_szClass, TEXT("ReadRegistry"));
    const auto body = [this] {
        Fetch();
        return true;
    };
    return op.Run(PassOn<CUnableToReadRegistryException>(), body, FailureWarning::UnlessRaised);
}

bool CRegistryDword::WriteRegistry()
{
    const COperation op(*this, s_szClass, TEXT("WriteRegistry"));
    const auto body = [this] {
        Flush();
        return true;
    };
    return op.Run(PassOn<CUnableToWriteRegistryException>(), body, FailureWarning::UnlessRaised);
}

/// A value shorter than a DWORD gives the low bytes. Reading a longer one fails.
void CRegistryDword::Fetch()
{
    DWORD dwRead = 0;
    Query(&dwRead, sizeof(dwRead), [this] { SetRegistryDword(0, true); });
    m_dwValue = dwRead;
}

void CRegistryDword::Flush() const
{
    Store(REG_DWORD, &m_dwValue, sizeof(m_dwValue));
}
