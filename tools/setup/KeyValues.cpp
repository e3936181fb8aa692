#include "KeyValues.h"

#include <memory>

#include <sddl.h>

#include "machine/SetupError.h"

namespace {

constexpr DWORD LONGEST_VALUE_NAME = 16383;
constexpr WCHAR SECRET[] = L"D:P(A;CI;KA;;;SY)(A;CI;KA;;;BA)";

class CKey
{
public:
    explicit CKey(const WideText& path) : m_path(path) {}
    ~CKey()
    {
        if (m_hKey != nullptr) {
            RegCloseKey(m_hKey);
        }
    }
    CKey(const CKey&) = delete;
    CKey& operator=(const CKey&) = delete;

    bool Open(REGSAM access = KEY_READ)
    {
        const LONG lResult = RegOpenKeyExW(HKEY_LOCAL_MACHINE, m_path.c_str(), 0, access, &m_hKey);
        return lResult != ERROR_FILE_NOT_FOUND && Require(lResult);
    }
    void Create(SECURITY_ATTRIBUTES* pAttributes)
    {
        Require(RegCreateKeyExW(HKEY_LOCAL_MACHINE, m_path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE,
                                pAttributes, &m_hKey, nullptr));
    }
    HKEY Get() const { return m_hKey; }

    bool Require(LONG lResult) const
    {
        if (lResult != ERROR_SUCCESS) {
            throw CSetupError("HKEY_LOCAL_MACHINE\\" + Shown(m_path) + ": error " + std::to_string(lResult));
        }
        return true;
    }

private:
    const WideText m_path;
    HKEY m_hKey = nullptr;
};

} // namespace

std::optional<KeyValues> ReadKeyValues(const WideText& path)
{
    CKey key(path);
    if (!key.Open()) {
        return std::nullopt;
    }
    DWORD cbLongest = 0;
    key.Require(RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, &cbLongest, nullptr, nullptr));
    KeyValues values;
    WideText name(LONGEST_VALUE_NAME + 1, L'\0');
    for (DWORD nValue = 0;; ++nValue) {
        CKeyValue value;
        value.data.resize(cbLongest + 1);
        DWORD cchName = LONGEST_VALUE_NAME + 1;
        DWORD cbData = cbLongest + 1;
        const LONG lResult = RegEnumValueW(key.Get(), nValue, name.data(), &cchName, nullptr, &value.dwType,
                                           value.data.data(), &cbData);
        if (lResult == ERROR_NO_MORE_ITEMS) {
            return values;
        }
        key.Require(lResult);
        value.data.resize(cbData);
        values[name.substr(0, cchName)] = value;
    }
}

void MakeKey(const WideText& path, bool bSecret)
{
    CKey key(path);
    if (!bSecret) {
        key.Create(nullptr);
        return;
    }
    SECURITY_ATTRIBUTES attributes = {sizeof(attributes), nullptr, FALSE};
    key.Require(ConvertStringSecurityDescriptorToSecurityDescriptorW(
                    SECRET, SDDL_REVISION_1, &attributes.lpSecurityDescriptor, nullptr)
                    ? ERROR_SUCCESS
                    : static_cast<LONG>(GetLastError()));
    const std::unique_ptr<void, decltype(&LocalFree)> owner(attributes.lpSecurityDescriptor, LocalFree);
    key.Create(&attributes);
}

void WriteKeyValue(const WideText& path, const WideText& name, const std::optional<CKeyValue>& value)
{
    CKey key(path);
    if (!key.Open(KEY_READ | KEY_WRITE)) {
        key.Require(ERROR_FILE_NOT_FOUND);
    }
    if (value) {
        key.Require(RegSetValueExW(key.Get(), name.c_str(), 0, value->dwType, value->data.data(),
                                   static_cast<DWORD>(value->data.size())));
    } else if (const LONG lResult = RegDeleteValueW(key.Get(), name.c_str()); lResult != ERROR_FILE_NOT_FOUND)
    {
        key.Require(lResult);
    }
}

void DeleteEmptyKey(const WideText& path)
{
    const std::optional<KeyValues> values = ReadKeyValues(path);
    if (values && values->empty()) {
        DeleteKey(path);
    }
}

void DeleteKey(const WideText& path)
{
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, path.c_str());
}

CKeyValue MakeNumberValue(DWORD dwNumber)
{
    const BYTE* pData = reinterpret_cast<const BYTE*>(&dwNumber);
    return {REG_DWORD, {pData, pData + sizeof(dwNumber)}};
}
