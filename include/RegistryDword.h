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

    /// Gives the value, after reading the registry if bRefresh is set or the value is read through.
    /// Throws CBadArgException, CUnableToReadRegistryException.
    bool GetRegistryDword(DWORD* pdwValue, bool bRefresh);

    /// Keeps the value and writes it if bForceWrite is set or the value is written through. When the
    /// write fails the cache keeps the new value. Throws CUnableToWriteRegistryException.
    bool SetRegistryDword(DWORD dwValue, bool bForceWrite);

    bool ReadRegistry() override;
    bool WriteRegistry() override;

    DWORD m_dwValue;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CRegistryDword");

    void Fetch();
    void Flush() const;
};
