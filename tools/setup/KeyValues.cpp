#include "KeyValues.h"

#include <memory>

#include <sddl.h>

#include "machine/OpenKey.h"
#include "machine/SetupError.h"

namespace {

constexpr DWORD LONGEST_VALUE_NAME = 16383;
constexpr WCHAR SECRET[] = L"D:P(A;CI;KA;;;SY)(A;CI;KA;;;BA)";

void Require(LONG lResult, const WideText& path)
{
    if (lResult != ERROR_SUCCESS) {
        throw CSetupError("HKEY_LOCAL_MACHINE\\" + Shown(path) + ": error " + std::to_string(lResult));
    }
}

} // namespace

bool CLessName::operator()(const WideText& left, const WideText& right) const
{
    return lstrcmpiW(left.c_str(), right.c_str()) < 0;
}

std::optional<KeyValues> ReadKeyValues(const WideText& path)
{
    COpenKey key;
    const LONG lOpened = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key.m_hKey);
    if (lOpened == ERROR_FILE_NOT_FOUND) {
        return std::nullopt;
    }
    Require(lOpened, path);
    DWORD cbLongest = 0;
    Require(RegQueryInfoKeyW(key.m_hKey, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, &cbLongest, nullptr, nullptr),
            path);
    KeyValues values;
    WideText name(LONGEST_VALUE_NAME + 1, L'\0');
    for (DWORD nValue = 0;; ++nValue) {
        Platform::CRegistryData data = {};
        data.bytes.resize(cbLongest + 1);
        DWORD cchName = LONGEST_VALUE_NAME + 1;
        DWORD cbData = cbLongest + 1;
        const LONG lResult = RegEnumValueW(key.m_hKey, nValue, name.data(), &cchName, nullptr, &data.dwType,
                                           data.bytes.data(), &cbData);
        if (lResult == ERROR_NO_MORE_ITEMS) {
            return values;
        }
        Require(lResult, path);
        data.bytes.resize(cbData);
        values[name.substr(0, cchName)] = data;
    }
}

void MakeSecretKey(const WideText& path)
{
    SECURITY_ATTRIBUTES attributes = {sizeof(attributes), nullptr, FALSE};
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(SECRET, SDDL_REVISION_1,
                                                              &attributes.lpSecurityDescriptor, nullptr))
    {
        Require(static_cast<LONG>(GetLastError()), path);
    }
    const std::unique_ptr<void, decltype(&LocalFree)> owner(attributes.lpSecurityDescriptor, LocalFree);
    COpenKey key;
    Require(RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE,
                            &attributes, &key.m_hKey, nullptr),
            path);
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
