#include "ChainValues.h"

#include <algorithm>
#include <cstring>

#include "CommandError.h"
#include "GinaNames.h"
#include "MachineScope.h"
#include "machine/OpenKey.h"

namespace {

std::string ErrorText(LONG lError)
{
    return lError == ERROR_ACCESS_DENIED
               ? std::string("access is denied; lumctl must be run by an administrator")
               : Format("error %d, see net helpmsg %d", static_cast<int>(lError), static_cast<int>(lError));
}

[[noreturn]] void Fail(const char* szVerb, const CValuePlace& place, LONG lError)
{
    throw CCommandError(
        Format("cannot %s %s: %s", szVerb, Describe(place).c_str(), ErrorText(lError).c_str()));
}

/// Opens a key with the same access as the library, so that both see the same chain.
LONG Open(const CValuePlace& place, COpenKey& key)
{
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, CMachineScope::Resolve(place.key).c_str(), 0, KEY_ALL_ACCESS,
                         &key.m_hKey);
}

LONG Query(HKEY hKey, const CValuePlace& place, Platform::CRegistryData& data)
{
    LONG lResult = ERROR_MORE_DATA;
    for (DWORD cbData = 0; lResult == ERROR_MORE_DATA || data.bytes.size() != cbData;) {
        data.bytes.resize(cbData);
        lResult = RegQueryValueExW(hKey, place.name.c_str(), nullptr, &data.dwType,
                                   cbData != 0 ? data.bytes.data() : nullptr, &cbData);
        if (lResult != ERROR_SUCCESS && lResult != ERROR_MORE_DATA) {
            return lResult;
        }
    }
    return ERROR_SUCCESS;
}

LONG Store(const CValuePlace& place, const Platform::CRegistryData& data)
{
    COpenKey key;
    const LONG lResult =
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, CMachineScope::Resolve(place.key).c_str(), 0, nullptr,
                        REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &key.m_hKey, nullptr);
    return lResult != ERROR_SUCCESS
               ? lResult
               : RegSetValueExW(key.m_hKey, place.name.c_str(), 0, data.dwType, data.bytes.data(),
                                static_cast<DWORD>(data.bytes.size()));
}

LONG Delete(const CValuePlace& place)
{
    COpenKey key;
    const LONG lResult = Open(place, key);
    return lResult != ERROR_SUCCESS ? lResult : RegDeleteValueW(key.m_hKey, place.name.c_str());
}

} // namespace

bool CValuePlace::operator==(const CValuePlace& other) const
{
    return EqualNames(key.c_str(), other.key.c_str()) && EqualNames(name.c_str(), other.name.c_str());
}

const CChainValue* CChainValues::Find(const CValuePlace& place) const
{
    const auto found = std::find_if(m_values.begin(), m_values.end(),
                                    [&](const CChainValue& value) { return value.place == place; });
    return found != m_values.end() ? &*found : nullptr;
}

void CChainValues::Set(const CValuePlace& place, const CValueData& data)
{
    const auto found = std::find_if(m_values.begin(), m_values.end(),
                                    [&](const CChainValue& value) { return value.place == place; });
    if (found != m_values.end()) {
        found->data = data;
    } else {
        m_values.push_back({place, data});
    }
}

WideText TextOf(const CValueData& data)
{
    WideText text(IsText(data) ? data->bytes.size() / sizeof(WCHAR) : 0, 0);
    if (!text.empty()) {
        std::memcpy(text.data(), data->bytes.data(), text.size() * sizeof(WCHAR));
    }
    return text.c_str();
}

DWORD NumberOf(const CValueData& data)
{
    DWORD dwNumber = 0;
    if (data && data->dwType == REG_DWORD && data->bytes.size() == sizeof(dwNumber)) {
        std::memcpy(&dwNumber, data->bytes.data(), sizeof(dwNumber));
    }
    return dwNumber;
}

bool IsTooLong(const CValueData& data)
{
    return data && (TextOf(data).size() > LONGEST_NAME || data->bytes.size() > NAME_CAPACITY * sizeof(WCHAR));
}

CValueData MakeText(const WCHAR* szText)
{
    const auto* pBytes = reinterpret_cast<const BYTE*>(szText);
    const std::size_t cbText = (std::char_traits<WCHAR>::length(szText) + 1) * sizeof(WCHAR);
    return Platform::CRegistryData{REG_SZ, {pBytes, pBytes + cbText}};
}

CValueData WithTypeOf(const CValueData& before, CValueData text)
{
    if (text && IsText(before)) {
        text->dwType = before->dwType;
    }
    return text;
}

CValueData MakeNumber(DWORD dwNumber)
{
    const auto* pBytes = reinterpret_cast<const BYTE*>(&dwNumber);
    return Platform::CRegistryData{REG_DWORD, {pBytes, pBytes + sizeof(dwNumber)}};
}

std::string DescribeKey(const CValuePlace& place)
{
    return "HKEY_LOCAL_MACHINE\\" + Shown(CMachineScope::Resolve(place.key));
}

std::string Describe(const CValuePlace& place)
{
    return DescribeKey(place) + ", " + Shown(place.name);
}

bool IsText(const CValueData& data)
{
    return data && (data->dwType == REG_SZ || data->dwType == REG_EXPAND_SZ);
}

bool IsNoText(const CValueData& data)
{
    return data && !IsText(data);
}

std::string Describe(const CValueData& data)
{
    if (!data) {
        return "(none)";
    }
    if (DWORD dwNumber = 0; data->dwType == REG_DWORD && data->bytes.size() == sizeof(dwNumber)) {
        std::memcpy(&dwNumber, data->bytes.data(), sizeof(dwNumber));
        return Format("%u (REG_DWORD)", static_cast<unsigned>(dwNumber));
    }
    if (!IsText(data)) {
        return Format("(no text: %u bytes of type %u)", static_cast<unsigned>(data->bytes.size()),
                      static_cast<unsigned>(data->dwType));
    }
    const std::string text = '"' + Shown(TextOf(data)) + '"';
    return data->dwType == REG_SZ ? text : text + " (REG_EXPAND_SZ)";
}

CValueData ReadValue(const CValuePlace& place)
{
    COpenKey key;
    Platform::CRegistryData data = {};
    LONG lResult = Open(place, key);
    if (lResult == ERROR_SUCCESS) {
        lResult = Query(key.m_hKey, place, data);
    }
    if (lResult == ERROR_FILE_NOT_FOUND) {
        return std::nullopt;
    }
    if (lResult != ERROR_SUCCESS) {
        Fail("read", place, lResult);
    }
    return data;
}

void WriteValue(const CValuePlace& place, const CValueData& data)
{
    const LONG lResult = data ? Store(place, *data) : Delete(place);
    if (lResult != ERROR_SUCCESS && (data || lResult != ERROR_FILE_NOT_FOUND)) {
        Fail(data ? "write" : "delete", place, lResult);
    }
}

void FlushKey(const CValuePlace& place)
{
    COpenKey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, CMachineScope::Resolve(place.key).c_str(), 0, KEY_QUERY_VALUE,
                      &key.m_hKey) == ERROR_SUCCESS)
    {
        RegFlushKey(key.m_hKey);
    }
}
