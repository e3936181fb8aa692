#pragma once

#include "GinaNames.h"
#include "RegistryValue.h"
#include "Wipe.h"

/// A text in the registry, with a cached copy of at most 259 characters, empty until the first read.
class CRegistryString final : public CRegistryValue
{
public:
    /// bReadNow: read the value into the cache here. The rest as for CRegistryValue. Throws
    /// CBadArgException, what OpenKey and ReadRegistry throw, CRegistryStringInitException.
    CRegistryString(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HKEY hKeyRoot, const WCHAR* szSubKey,
                    const WCHAR* szValueName, REGSAM samDesired, bool bCreate, bool bOpenNow,
                    bool bReadThrough, bool bWriteThrough, bool bReadNow, DWORD dwOptions);
    /// Wipes the cache: some texts are secrets.
    ~CRegistryString();

    /// Copies the text into a buffer of cchDest characters, cut to fit and always terminated. Reads the
    /// registry first if bRefresh is set or the value is read through. Throws CBadArgException,
    /// CUnableToReadRegistryException.
    bool GetRegistryString(WCHAR* szDest, DWORD cchDest, bool bRefresh);

    /// Puts the text, cut to 259 characters, into the cache, and writes it to the registry if bForceWrite is
    /// set or the value is written through. The cache keeps the new text even if the write fails. Throws
    /// CBadArgException, CUnableToWriteRegistryException, CWcscpyException.
    bool SetRegistryString(const WCHAR* szSrc, bool bForceWrite);

    /// Wipes the cache, so that it is empty until the next read.
    void Forget() noexcept;

    bool ReadRegistry() override;
    bool WriteRegistry() override;

    WCHAR m_szRegString[NAME_CAPACITY + 1];

private:
    static constexpr const WCHAR* s_szClass = TEXT("CRegistryString");

    void Fetch();
    void Flush() const;

    /// A member, so that it also wipes when a constructor fails after its read.
    const CWipeAtEnd<NAME_CAPACITY + 1> m_Wipe{m_szRegString};
};
