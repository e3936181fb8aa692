#pragma once

#include "RegistryKey.h"

class COperation;

/// One named value of a registry key: what texts and numbers have in common.
///
/// The operations use the handle of the key, so the key must be open. The destructor is not virtual: a value
/// is destroyed as its own type.
class CRegistryValue : public CRegistryKey
{
public:
    /// Reads the registry into the cached copy. Throws CUnableToReadRegistryException.
    virtual bool ReadRegistry() = 0;

    /// Writes the cached copy to the registry. Throws CUnableToWriteRegistryException.
    virtual bool WriteRegistry() = 0;

    /// Deletes the value from the key. Throws CUnableToDeleteRegistryValueException.
    bool DeleteRegistryValue();

    /// Whether the registry has the value, readable or not.
    bool Exists() const noexcept;

    COwnedText m_szValueName;
    bool m_bReadThrough;
    bool m_bWriteThrough;

protected:
    /// szValueName: not empty. bReadThrough: every get reads the registry. bWriteThrough: every set
    /// writes it. The rest as for CRegistryKey. Throws CBadArgException, what OpenKey throws,
    /// CRegistryValueInitException.
    CRegistryValue(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HKEY hKeyRoot, const WCHAR* szSubKey,
                   const WCHAR* szValueName, REGSAM samDesired, bool bCreate, bool bOpenNow,
                   bool bReadThrough, bool bWriteThrough, DWORD dwOptions);
    ~CRegistryValue();

    /// Reads at most cbData bytes of the value, whatever its type, and returns how many it read. With
    /// bCreate, a missing value is made by createDefault() and counts as 0 bytes. Throws
    /// CUnableToReadRegistryException.
    template <typename CreateDefault>
    DWORD Query(void* pData, DWORD cbData, CreateDefault createDefault)
    {
        const LONG lResult = TryQuery(pData, &cbData);
        if (lResult == ERROR_FILE_NOT_FOUND && m_bCreate) {
            createDefault();
            ReportDefault();
            return 0;
        }
        if (lResult != ERROR_SUCCESS) {
            FailRead(lResult);
        }
        return cbData;
    }

    /// Writes the value. Throws CUnableToWriteRegistryException.
    void Store(DWORD dwType, const void* pData, DWORD cbData) const;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CRegistryValue");

    LONG TryQuery(void* pData, DWORD* pcbData) const;
    void ReportDefault() const;
    [[noreturn]] void FailRead(LONG lError) const;
};
