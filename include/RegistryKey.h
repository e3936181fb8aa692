#pragma once

#include "GlobalObject.h"
#include "Owned.h"

/// One registry key, opened and closed on demand.
///
/// Operations return true for success. Each names the exceptions that it throws; any other failure is
/// reported and returns false. There is no lock: an owner that shares the object between threads locks it.
class CRegistryKey : public CGlobalObject
{
public:
    /// bCreate: make a missing key (for a value: a missing value too). bOpenNow: open the key here.
    /// dwOptions: those of RegCreateKeyExW for a key that is made. Throws CBadArgException for a null
    /// szSubKey, what OpenKey throws, and CRegistryKeyInitException for any other failure.
    CRegistryKey(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HKEY hKeyRoot, const WCHAR* szSubKey,
                 REGSAM samDesired, bool bCreate, bool bOpenNow, DWORD dwOptions);
    ~CRegistryKey();
    CRegistryKey(const CRegistryKey&) = delete;
    CRegistryKey& operator=(const CRegistryKey&) = delete;

    /// Opens the key, after closing it if it was open. With bCreate, a missing key is made first. Throws
    /// CUnableToOpenRegistryKeyException, CUnableToCreateRegistryKeyException.
    bool OpenKey();

    /// Makes the key if it is missing, and leaves it closed. Throws CUnableToCreateRegistryKeyException.
    bool CreateKey();

    /// Closes the key; if it is closed already, only warns. Throws CUnableToCloseRegistryKeyException.
    bool CloseKey();

    /// Whether the key is open and has not been deleted meanwhile.
    bool IsUsable() const noexcept;

    HKEY m_hKeyRoot;
    COwnedText m_szSubKey;
    REGSAM m_samDesired;
    DWORD m_dwOptions;
    HKEY m_hKey;
    bool m_bCreate;
    bool m_bOpen;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CRegistryKey");

    LONG TryOpen();
};
