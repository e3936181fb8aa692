#pragma once

#include "ChainingRecord.h"
#include "GinaChainingObject.h"
#include "RegistryString.h"

/// What is known of one GINA: where it keeps the name of the GINA that it passes through to, whether it ends
/// a chain, and what it passes through to by default.
///
/// Has no lock: the owner of the list of records has one.
class CGinaChainingInfoObject final : public CGinaChainingObject
{
public:
    /// szSubKey: the GINA's own key below HKEY_LOCAL_MACHINE. szOldGinaDLLKey: its passthrough value there. A
    /// terminator needs neither. szDefaultGinaDLL may be null. The object is made even if the key or the
    /// value does not exist. All constructors throw CBadArgException for a name or key that is missing,
    /// CGinaChainingInfoObjectInitException for any other failure.
    CGinaChainingInfoObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, const WCHAR* szGinaDLL,
                            const WCHAR* szSubKey, const WCHAR* szOldGinaDLLKey,
                            const WCHAR* szDefaultGinaDLL, bool bTerminator, bool bStandalone,
                            bool bMustBeFirst, bool bIsIncompatible);

    /// The GINA as a chaining record describes it (see CChainingRecord).
    CGinaChainingInfoObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, const WCHAR* szGinaDLL,
                            const WCHAR* szCommaDelimitedStr);

    /// A copy, which opens the passthrough value for itself.
    CGinaChainingInfoObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg,
                            const CGinaChainingInfoObject* pGinaChainingInfoObject);
    ~CGinaChainingInfoObject();

    bool operator==(const WCHAR* szGinaDLL) const noexcept;

    /// Copies the passthrough value, as the registry has it now, into a buffer of cchDest characters. False
    /// for a terminator, and when there is no such value.
    bool GetOldGinaDLL(WCHAR* szDest, DWORD cchDest) noexcept;

    /// Writes the passthrough value. If key and value have not existed so far, they are made, the value empty
    /// at first. A key that existed and is gone stays gone. Writes nothing for a terminator. Of null it only
    /// warns, and makes nothing.
    void SetOldGinaDLL(const WCHAR* szValue) noexcept;

    /// All that is known. The texts are those of this object.
    CChainingRecord GetRecord() const noexcept;

    /// Null for a row of the table that has none.
    COwnedText m_szSubKey;
    COwnedText m_szOldGinaDLLKey;
    /// Null if there is none. A record may have an empty one.
    COwnedText m_szDefaultGinaDLL;
    bool m_bTerminator = false;
    bool m_bStandalone = false;
    bool m_bMustBeFirst = false;
    bool m_bIsIncompatible = false;
    /// Null for a terminator, and while the key or the value does not exist or cannot be read.
    COwned<CRegistryString> m_pOldGinaDLL;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CGinaChainingInfoObject");

    void Describe(const CChainingRecord& record);
    void ReopenDeletedKey(const COperation& op) noexcept;
};
