#include "RegistryString.h"

#include "Exceptions.h"
#include "GuardedText.h"
#include "Operation.h"
#include "RequireArgument.h"

namespace {

using Traits = std::char_traits<WCHAR>;

// The most that a query reads: 260 characters. The cache keeps 259 and adds a terminator, since the value may
// lack one.
constexpr DWORD QUERY_BYTES = 520;

/// Wipes the stack below the frame of its owner at the end of a scope. The system's query has a buffer of its
/// own there for short texts, and leaves the text in it.
class CWipeStackBelow
{
public:
    CWipeStackBelow() = default;
    [[gnu::noinline]] ~CWipeStackBelow()
    {
        WCHAR szBelow[2048];
        Wipe(szBelow);
    }
    CWipeStackBelow(const CWipeStackBelow&) = delete;
    CWipeStackBelow& operator=(const CWipeStackBelow&) = delete;
};

} // namespace

CRegistryString::CRegistryString(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HKEY hKeyRoot,
                                 const WCHAR* szSubKey, const WCHAR* szValueName, REGSAM samDesired,
                                 bool bCreate, bool bOpenNow, bool bReadThrough, bool bWriteThrough,
                                 bool bReadNow, DWORD dwOptions)
try : CRegistryValue(szAPPArg, szMTMArg, hKeyRoot, szSubKey, szValueName, samDesired, bCreate, bOpenNow,
                     bReadThrough, bWriteThrough, dwOptions),
    m_szRegString{}
{
    const CConstructionTrace trace(*this, s_szClass);
    WCHAR szScratch[NAME_CAPACITY];
    const CWipeAtEnd wipe(szScratch);
    if (bReadNow && !GetRegistryString(szScratch, NAME_CAPACITY, true)) {
        throw CRegistryStringInitException(*this);
    }
} catch (...) {
    FailConstruction<CRegistryStringInitException, CBadArgException, CUnableToOpenRegistryKeyException,
                     CUnableToCreateRegistryKeyException, CUnableToReadRegistryException>(
        {szAPPArg, szMTMArg});
}

CRegistryString::~CRegistryString()
{
    const CDestructionTrace trace(*this, s_szClass);
}

void CRegistryString::Forget() noexcept
{
    Wipe(m_szRegString);
}

bool CRegistryString::GetRegistryString(WCHAR* szDest, DWORD cchDest, bool bRefresh)
{
    const COperation op(*this, s_szClass, TEXT("GetRegistryString"));
    return op.Run(
        Handlers<PassOn<CBadArgException, CUnableToReadRegistryException>, Absorb<CWcscpyException>>(),
        [&] {
            RequireArgument(*this, szDest != nullptr && cchDest != 0, TEXT("szDest"));
            if (bRefresh || m_bReadThrough) {
                Fetch();
            }
            std::size_t cchCopy = Traits::length(m_szRegString);
            if (cchDest <= cchCopy) {
                op.Warn(ERR_STRING_TOO_LONG);
                cchCopy = cchDest - 1;
            }
            CopyToBuffer(*this, szDest, m_szRegString, cchCopy);
            return true;
        },
        FailureWarning::UnlessRaised);
}

bool CRegistryString::SetRegistryString(const WCHAR* szSrc, bool bForceWrite)
{
    const COperation op(*this, s_szClass, TEXT("SetRegistryString"));
    return op.Run(
        PassOn<CBadArgException, CUnableToWriteRegistryException, CWcscpyException>(),
        [&] {
            RequireArgument(*this, szSrc, TEXT("szSrc"));
            std::size_t cchCopy = MeasureText(*this, szSrc);
            if (cchCopy > LONGEST_NAME) {
                op.Warn(ERR_STRING_TOO_LONG);
                cchCopy = LONGEST_NAME;
            }
            Traits::move(m_szRegString, szSrc, cchCopy);
            m_szRegString[cchCopy] = 0;
            if (bForceWrite || m_bWriteThrough) {
                Flush();
            }
            return true;
        },
        FailureWarning::UnlessRaised);
}

bool CRegistryString::ReadRegistry()
{
    const COperation op(*this, s_szClass, TEXT("ReadRegistry"));
    const auto body = [this] {
        Fetch();
        return true;
    };
    return op.Run(PassOn<CUnableToReadRegistryException>(), body, FailureWarning::UnlessRaised);
}

bool CRegistryString::WriteRegistry()
{
    const COperation op(*this, s_szClass, TEXT("WriteRegistry"));
    const auto body = [this] {
        Flush();
        return true;
    };
    return op.Run(PassOn<CUnableToWriteRegistryException>(), body, FailureWarning::UnlessRaised);
}

/// A value may have any type and length and may lack a terminator, so only the bytes that came back are used.
/// The cache changes only when the query has succeeded.
void CRegistryString::Fetch()
{
    WCHAR szRead[QUERY_BYTES / sizeof(WCHAR)];
    const CWipeAtEnd wipe(szRead);
    const CWipeStackBelow wipeBelow;
    const DWORD cbRead = Query(szRead, QUERY_BYTES, [this] { SetRegistryString(TEXT(""), true); });
    const DWORD cchRead = cbRead / sizeof(WCHAR);
    const DWORD cchKept = cchRead < LONGEST_NAME ? cchRead : LONGEST_NAME;
    Traits::copy(m_szRegString, szRead, cchKept);
    m_szRegString[cchKept] = 0;
}

void CRegistryString::Flush() const
{
    const std::size_t cchText = Traits::length(m_szRegString);
    Store(REG_SZ, m_szRegString, static_cast<DWORD>((cchText + 1) * sizeof(WCHAR)));
}
