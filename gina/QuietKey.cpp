#include "QuietKey.h"

#include <algorithm>

CQuietKey::CQuietKey(const WCHAR* szSubKey) noexcept
{
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, szSubKey, 0, KEY_QUERY_VALUE, &m_hKey) != ERROR_SUCCESS) {
        m_hKey = nullptr;
    }
}

CQuietKey::~CQuietKey()
{
    if (m_hKey != nullptr) {
        RegCloseKey(m_hKey);
    }
}

bool CQuietKey::Create(const WCHAR* szSubKey) noexcept
{
    HKEY hKey = nullptr;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, szSubKey, 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_QUERY_VALUE | KEY_SET_VALUE, nullptr, &hKey, nullptr) != ERROR_SUCCESS)
    {
        return false;
    }
    if (m_hKey != nullptr) {
        RegCloseKey(m_hKey);
    }
    m_hKey = hKey;
    return true;
}

bool CQuietKey::Has(const WCHAR* szValue) const noexcept
{
    return RegQueryValueExW(m_hKey, szValue, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

DWORD CQuietKey::ReadNumber(const WCHAR* szValue) const noexcept
{
    DWORD dwType = REG_NONE;
    DWORD dwNumber = 0;
    DWORD cbNumber = sizeof(dwNumber);
    const LONG lResult =
        RegQueryValueExW(m_hKey, szValue, nullptr, &dwType, reinterpret_cast<BYTE*>(&dwNumber), &cbNumber);
    return lResult == ERROR_SUCCESS && dwType == REG_DWORD && cbNumber == sizeof(dwNumber) ? dwNumber : 0;
}

bool CQuietKey::ReadText(const WCHAR* szValue, Text& text) const
{
    DWORD dwType = REG_NONE;
    DWORD cbText = 0;
    const auto query = [&](BYTE* pData) {
        return RegQueryValueExW(m_hKey, szValue, nullptr, &dwType, pData, &cbText) == ERROR_SUCCESS &&
               dwType == REG_SZ;
    };
    text.clear();
    if (!query(nullptr)) {
        return false;
    }
    text.resize(cbText / sizeof(WCHAR));
    cbText = static_cast<DWORD>(text.size() * sizeof(WCHAR));
    const bool bRead = query(reinterpret_cast<BYTE*>(text.data()));
    // The terminator is part of the data, or is missing.
    text.resize(bRead ? std::min(text.find(WCHAR(0)), text.size()) : 0);
    return bRead;
}

void CQuietKey::WriteNumber(const WCHAR* szValue, DWORD dwNumber) noexcept
{
    Write(szValue, REG_DWORD, &dwNumber, sizeof(dwNumber));
}

void CQuietKey::WriteText(const WCHAR* szValue, const WCHAR* szText) noexcept
{
    const std::basic_string_view<WCHAR> text(szText);
    Write(szValue, REG_SZ, szText, (text.size() + 1) * sizeof(WCHAR));
}

void CQuietKey::Write(const WCHAR* szValue, DWORD dwType, const void* pData, std::size_t cbData) noexcept
{
    RegSetValueExW(m_hKey, szValue, 0, dwType, static_cast<const BYTE*>(pData), static_cast<DWORD>(cbData));
}

void CQuietKey::Delete(const WCHAR* szValue) noexcept
{
    RegDeleteValueW(m_hKey, szValue);
}

void CQuietKey::Flush() noexcept
{
    RegFlushKey(m_hKey);
}
