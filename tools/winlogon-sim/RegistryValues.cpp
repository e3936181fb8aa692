#include "RegistryValues.h"

#include "GinaNames.h"
#include "machine/OpenKey.h"
#include "machine/SetupError.h"

namespace {

void Check(LONG lResult, const WideText& key, const WideText& value)
{
    if (lResult != ERROR_SUCCESS) {
        throw CSetupError(Format("cannot write %s of HKEY_LOCAL_MACHINE\\%s: error %d",
                                 ToNarrow(value.c_str()).c_str(), ToNarrow(key.c_str()).c_str(),
                                 static_cast<int>(lResult)));
    }
}

/// Calls change(key) with a key under HKEY_LOCAL_MACHINE, created if it is not there.
template <typename Change>
void ChangeKey(const WideText& key, const WideText& value, Change change)
{
    COpenKey open;
    Check(RegCreateKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                          KEY_ALL_ACCESS, nullptr, &open.m_hKey, nullptr),
          key, value);
    Check(change(open.m_hKey), key, value);
}

void WriteValue(const WideText& key, const WideText& value, DWORD dwType, const void* pData,
                std::size_t cbData)
{
    ChangeKey(key, value, [&](HKEY hKey) {
        return RegSetValueExW(hKey, value.c_str(), 0, dwType, static_cast<const BYTE*>(pData),
                              static_cast<DWORD>(cbData));
    });
}

LONG Query(const WideText& key, const WideText& value, void* pData, DWORD cbData)
{
    COpenKey open;
    const LONG lResult = RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ, &open.m_hKey);
    return lResult != ERROR_SUCCESS ? lResult
                                    : RegQueryValueExW(open.m_hKey, value.c_str(), nullptr, nullptr,
                                                       static_cast<BYTE*>(pData), &cbData);
}

} // namespace

bool HasValue(const WideText& key, const WideText& value)
{
    return Query(key, value, nullptr, 0) == ERROR_SUCCESS;
}

DWORD ReadNumber(const WideText& key, const WideText& value)
{
    DWORD dwNumber = 0;
    return Query(key, value, &dwNumber, sizeof(dwNumber)) == ERROR_SUCCESS ? dwNumber : 0;
}

std::optional<std::string> ReadText(const WideText& key, const WideText& value)
{
    WCHAR szText[NAME_CAPACITY + 1] = {};
    return Query(key, value, szText, NAME_CAPACITY * sizeof(WCHAR)) == ERROR_SUCCESS
               ? std::optional(ToNarrow(szText))
               : std::nullopt;
}

void WriteText(const WideText& key, const WideText& value, const std::string& text)
{
    const WideText wide = ToWide(text);
    WriteValue(key, value, REG_SZ, wide.c_str(), (wide.size() + 1) * sizeof(WCHAR));
}

void WriteNumber(const WideText& key, const WideText& value, DWORD dwNumber)
{
    WriteValue(key, value, REG_DWORD, &dwNumber, sizeof(dwNumber));
}

void DeleteValue(const WideText& key, const WideText& value)
{
    ChangeKey(key, value, [&](HKEY hKey) {
        const LONG lResult = RegDeleteValueW(hKey, value.c_str());
        return lResult == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : lResult;
    });
}
