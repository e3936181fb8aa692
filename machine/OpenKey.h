#pragma once

#include <windows.h>

/// A registry key, which is closed at the object's end. m_hKey is null until a call of the system fills it.
class COpenKey
{
public:
    COpenKey() = default;
    ~COpenKey()
    {
        if (m_hKey != nullptr) {
            RegCloseKey(m_hKey);
        }
    }
    COpenKey(const COpenKey&) = delete;
    COpenKey& operator=(const COpenKey&) = delete;

    HKEY m_hKey = nullptr;
};
