#pragma once

#include "Exceptions.h"
#include "Owned.h"
#include "RegistryClasses.h"

/// Makes the object of a value below HKEY_LOCAL_MACHINE and opens the value's key. Every read goes to the
/// registry and every write is immediate. bCreate: make a missing key, and on reading a missing value.
/// bReadNow: read the value once here. dwOptions: those of RegCreateKeyExW for a key that is made. Throws
/// what the constructor of Value throws.
template <typename Value>
COwned<Value> OpenMachineValue(const CMessageOrigin& origin, const WCHAR* szSubKey, const WCHAR* szValueName,
                               bool bCreate, bool bReadNow, DWORD dwOptions = REG_OPTION_NON_VOLATILE)
{
    return MakeOwned<Value>(origin.szAPP, origin.szMTM, HKEY_LOCAL_MACHINE, szSubKey, szValueName,
                            KEY_ALL_ACCESS, bCreate, true, true, true, bReadNow, dwOptions);
}

/// Makes a value that is missing, and its key, and opens it. The object does not make them again when it is
/// used after they have been deleted. Throws what the constructor of Value throws.
template <typename Value>
COwned<Value> MakeMachineValue(const CMessageOrigin& origin, const WCHAR* szSubKey, const WCHAR* szValueName)
{
    OpenMachineValue<Value>(origin, szSubKey, szValueName, true, true);
    return OpenMachineValue<Value>(origin, szSubKey, szValueName, false, true);
}

/// The error code of a value whose object does not exist.
inline constexpr DWORD NO_VALUE_OBJECT = 0xFFFFFFFF;

/// The object of a value that is to be read. Throws CUnableToReadRegistryException when there is none.
template <typename Value>
Value& RequireValue(const CMessageOrigin& origin, const COwned<Value>& pValue, const WCHAR* szValueName,
                    CSourceLocation where = CSourceLocation::Current())
{
    if (pValue == nullptr) {
        throw CUnableToReadRegistryException(origin, szValueName, NO_VALUE_OBJECT, where);
    }
    return *pValue;
}
