#pragma once

#include "RegistryValue.h"

/// A number in the registry, with a cached copy.
class CRegistryDword final : public CRegistryValue
{
public:
    /// bReadNow: read the value into the cache here. The rest as for CRegistryValue. Throws
    /// CBadArgException, what OpenKey and ReadRegistry throw, CRegistryDwordInitException.
    CRegistryDword(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HKEY hKeyRoot, const WCHAR* szSubKey,
                   const WCHAR* szValueName, REGSAM samDesired, bool bCreate, bool bOpenNow,
                   bool bReadThrough, bool bWriteThrough, bool bReadNow, DWORD dwOptions);
    ~CRegistryDword();

    /// Stores the value in *pdwValue. Reads the registry first if bRefresh is set or the value is read
    /// through. Throws CBadArgException, CUnableToReadRegistryException.
    bool GetRegistryDword(DWORD* pdwValue, bool bRefresh);

    /// Puts the value into the cache, and writes it to the registry if bForceWrite is set or the value is
    /// written through. The cache keeps the new value even if the write fails. Throws
    /// CUnableToWriteRegistryException.
    bool SetRegistryDword(DWORD dwValue, bool bForceWrite);

    bool ReadRegistry() override;
    bool WriteRegistry() override;

    DWORD m_dwValue;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CRegistryDword");

    void Fetch();
    void Flush() const;
};
