#pragma once

#include "GlobalObject.h"
#include "Owned.h"

/// One registry key, opened and closed on demand.
///
/// Operations give true for success. The exceptions that leave one are named with it; anything else
/// that goes wrong is reported and gives false. No lock: an object that threads share is guarded by
/// its owner.
class CRegistryKey : public CGlobalObject
{
public:
    /// bCreate: make the key when it is missing (for a value: the value too). bOpenNow: open the key
    /// here. dwOptions: those of RegCreateKeyExW for a key that is made. Throws CBadArgException for a
    /// null szSubKey, what OpenKey throws, and CRegistryKeyInitException for any other failure.
    CRegistryKey(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HKEY hKeyRoot, const WCHAR* szSubKey,
                 REGSAM samDesired, bool bCreate, bool bOpenNow, DWORD dwOptions);
    ~CRegistryKey();
    CRegistryKey(const CRegistryKey&) = delete;
    CRegistryKey& operator=(const CRegistryKey&) = delete;

    /// Opens the key, anew if it is open; one that is missing is made first when bCreate was given.
    /// Throws CUnableToOpenRegistryKeyException, CUnableToCreateRegistryKeyException.
    bool OpenKey();

    /// Makes the key if it is missing, and leaves it closed. Throws CUnableToCreateRegistryKeyException.
    bool CreateKey();

    /// Closes the key; a closed one is only warned of. Throws CUnableToCloseRegistryKeyException.
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
