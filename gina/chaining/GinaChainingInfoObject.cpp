#include "GinaChainingInfoObject.h"

#include "MachineValue.h"
#include "Exceptions.h"
#include "GuardedText.h"
#include "RequireArgument.h"

namespace {

using Text = CChainingRecord::Text;

/// The name of a key or value, which must not be missing. szNull and szEmpty: what the log calls a null name
/// and an empty one.
Text Required(const CMessageOrigin& origin, const WCHAR* szText, const WCHAR* szNull, const WCHAR* szEmpty)
{
    RequireArgument(origin, szText, szNull);
    RequireArgument(origin, *szText != 0, szEmpty);
    return szText;
}

Text TextOf(const WCHAR* szText) noexcept
{
    return szText != nullptr ? Text(szText) : Text();
}

COwnedText CopyGiven(const CMessageOrigin& origin, Text text, const WCHAR* szVariable)
{
    return text.data() != nullptr ? CopyText(origin, text, szVariable) : COwnedText();
}

} // namespace

CGinaChainingInfoObject::CGinaChainingInfoObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg,
                                                 const WCHAR* szGinaDLL, const WCHAR* szSubKey,
                                                 const WCHAR* szOldGinaDLLKey, const WCHAR* szDefaultGinaDLL,
                                                 bool bTerminator, bool bStandalone, bool bMustBeFirst,
                                                 bool bIsIncompatible)
try : CGinaChainingObject(szAPPArg, szMTMArg, szGinaDLL) {
    const CConstructionTrace trace(*this, s_szClass);
    CChainingRecord record{{}, {}, {}, bTerminator, bStandalone, bMustBeFirst, bIsIncompatible};
    if (!bTerminator) {
        record.szSubKey = Required(*this, szSubKey, TEXT("szSubKey"), TEXT("szSubkey"));
        record.szOldGinaDLLKey =
            Required(*this, szOldGinaDLLKey, TEXT("szOldGinaDLLKey"), TEXT("szOldGinaDLLKey"));
    }
    record.szDefaultGinaDLL = TextOf(szDefaultGinaDLL);
    Describe(record);
} catch (...) {
    FailConstruction<CGinaChainingInfoObjectInitException, CBadArgException>(LUM_GINA_ORIGIN);
}

CGinaChainingInfoObject::CGinaChainingInfoObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg,
                                                 const WCHAR* szGinaDLL, const WCHAR* szCommaDelimitedStr)
try : CGinaChainingObject(szAPPArg, szMTMArg, szGinaDLL) {
    const CConstructionTrace trace(*this, s_szClass);
    RequireArgument(*this, szCommaDelimitedStr, TEXT("szCommaDelimitedStr"));
    RequireArgument(*this, *szCommaDelimitedStr != 0, TEXT("szCommaDelmitedStr"));
    const std::optional<CChainingRecord> record = ParseChainingRecord(szCommaDelimitedStr);
    RequireArgument(*this, record.has_value(), TEXT("szCommaDelimitedStr"));
    Describe(*record);
} catch (...) {
    FailConstruction<CGinaChainingInfoObjectInitException, CBadArgException>(LUM_GINA_ORIGIN);
}

CGinaChainingInfoObject::CGinaChainingInfoObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg,
                                                 const CGinaChainingInfoObject* pGinaChainingInfoObject)
try : CGinaChainingObject(szAPPArg, szMTMArg, pGinaChainingInfoObject) {
    const CConstructionTrace trace(*this, s_szClass);
    Describe(pGinaChainingInfoObject->GetRecord());
} catch (...) {
    FailConstruction<CGinaChainingInfoObjectInitException, CBadArgException>(LUM_GINA_ORIGIN);
}

CGinaChainingInfoObject::~CGinaChainingInfoObject()
{
    const CDestructionTrace trace(*this, s_szClass);
    DeleteVariable(*this, TEXT("m_pOldGinaDLL"), [this] { m_pOldGinaDLL.Reset(); });
}

void CGinaChainingInfoObject::Describe(const CChainingRecord& record)
{
    m_szSubKey = CopyGiven(*this, record.szSubKey, TEXT("m_szSubKey"));
    m_szOldGinaDLLKey = CopyGiven(*this, record.szOldGinaDLLKey, TEXT("m_szOldGinaDLLKey"));
    m_szDefaultGinaDLL = CopyGiven(*this, record.szDefaultGinaDLL, TEXT("m_szDefaultGinaDLL"));
    m_bTerminator = record.bTerminator;
    m_bStandalone = record.bStandalone;
    m_bMustBeFirst = record.bMustBeFirst;
    m_bIsIncompatible = record.bIsIncompatible;
    if (m_bTerminator) {
        return;
    }
    try {
        m_pOldGinaDLL = OpenMachineValue<CRegistryString>(*this, m_szSubKey, m_szOldGinaDLLKey, false, true);
    } catch (...) {
        // Most known GINAs are not installed, so a missing key or value is only reported.
        if (!ReportIf<CMessage>()) {
            CWarning(*this, ERR_UNHANDLED_EXCEPTION);
        }
    }
}

CChainingRecord CGinaChainingInfoObject::GetRecord() const noexcept
{
    return {TextOf(m_szSubKey),
            TextOf(m_szOldGinaDLLKey),
            TextOf(m_szDefaultGinaDLL),
            m_bTerminator,
            m_bStandalone,
            m_bMustBeFirst,
            m_bIsIncompatible};
}

/// A GINA that has been installed again has a new key, and the open handle leads to the deleted one. A key
/// that still exists is kept open: a client that asks for the change may have fewer rights than the host had
/// when it opened the key.
void CGinaChainingInfoObject::ReopenDeletedKey(const COperation& op) noexcept
{
    try {
        if (!m_pOldGinaDLL->IsUsable()) {
            m_pOldGinaDLL->OpenKey();
        }
    } catch (...) {
        Absorb<CMessage>()(op);
    }
}

bool CGinaChainingInfoObject::operator==(const WCHAR* szGinaDLL) const noexcept
{
    return IsNamed(s_szClass, TEXT("operator=="), szGinaDLL);
}

bool CGinaChainingInfoObject::GetOldGinaDLL(WCHAR* szDest, DWORD cchDest) noexcept
{
    const COperation op(*this, s_szClass, TEXT("GetOldGinaDLL"));
    return op.Run(
        Absorb<CBadArgException, CUnableToReadRegistryException>(),
        [&] {
            if (m_bTerminator) {
                return false;
            }
            return RequireValue(*this, m_pOldGinaDLL, m_szOldGinaDLLKey)
                .GetRegistryString(szDest, cchDest, true);
        },
        FailureWarning::UnlessRaised);
}

void CGinaChainingInfoObject::SetOldGinaDLL(const WCHAR* szValue) noexcept
{
    const COperation op(*this, s_szClass, TEXT("SetOldGinaDLL"));
    op.Run(Absorb<CMessage>(), [&] {
        if (szValue == nullptr) {
            op.Warn(ERR_PUSHING_NULL);
        }
        if (m_bTerminator) {
            return;
        }
        if (m_pOldGinaDLL != nullptr) {
            ReopenDeletedKey(op);
        } else if (szValue != nullptr) {
            m_pOldGinaDLL = MakeMachineValue<CRegistryString>(*this, m_szSubKey, m_szOldGinaDLLKey);
        } else {
            return;
        }
        m_pOldGinaDLL->SetRegistryString(szValue, true);
    });
}
