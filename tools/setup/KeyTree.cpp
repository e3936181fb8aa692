#include "KeyTree.h"

#include "machine/SetupError.h"

namespace {

constexpr WCHAR VOLATILE_NOTES[] = L"Volatile";
constexpr DWORD LONGEST_VALUE_NAME = 16383;

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

    bool Open()
    {
        const LONG lResult = RegOpenKeyExW(HKEY_LOCAL_MACHINE, m_path.c_str(), 0, KEY_READ, &m_hKey);
        return lResult != ERROR_FILE_NOT_FOUND && Require(lResult);
    }
    void Create()
    {
        Require(RegCreateKeyExW(HKEY_LOCAL_MACHINE, m_path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE,
                                nullptr, &m_hKey, nullptr));
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

std::map<WideText, CKeyTreeValue> ReadValues(const CKey& key)
{
    DWORD cbLongest = 0;
    key.Require(RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, &cbLongest, nullptr, nullptr));
    std::map<WideText, CKeyTreeValue> values;
    WideText name(LONGEST_VALUE_NAME + 1, L'\0');
    for (DWORD nValue = 0;; ++nValue) {
        CKeyTreeValue value;
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

std::vector<WideText> ReadSubkeys(const CKey& key)
{
    std::vector<WideText> names;
    for (DWORD nKey = 0;; ++nKey) {
        WCHAR szName[256];
        DWORD cchName = 256;
        const LONG lResult =
            RegEnumKeyExW(key.Get(), nKey, szName, &cchName, nullptr, nullptr, nullptr, nullptr);
        if (lResult == ERROR_NO_MORE_ITEMS) {
            return names;
        }
        key.Require(lResult);
        if (lstrcmpiW(szName, VOLATILE_NOTES) != 0) {
            names.push_back(szName);
        }
    }
}

void WriteValues(const CKey& key, const CKeyTree& found, const CKeyTree& tree)
{
    for (const auto& [name, value] : found.values) {
        if (tree.values.count(name) == 0) {
            key.Require(RegDeleteValueW(key.Get(), name.c_str()));
        }
    }
    for (const auto& [name, value] : tree.values) {
        const auto old = found.values.find(name);
        if (old == found.values.end() || old->second != value) {
            key.Require(RegSetValueExW(key.Get(), name.c_str(), 0, value.dwType, value.data.data(),
                                       static_cast<DWORD>(value.data.size())));
        }
    }
}

/// pTree: null deletes the key.
void Write(const WideText& path, const CKeyTree* pTree)
{
    static const CKeyTree nothing;
    const std::optional<CKeyTree> found = ReadKeyTree(path);
    if (!found && pTree == nullptr) {
        return;
    }
    const CKeyTree& tree = pTree != nullptr ? *pTree : nothing;
    {
        CKey key(path);
        key.Create();
        WriteValues(key, found.value_or(nothing), tree);
    }
    if (found) {
        for (const auto& [name, below] : found->keys) {
            if (tree.keys.count(name) == 0) {
                Write(path + L'\\' + name, nullptr);
            }
        }
    }
    for (const auto& [name, below] : tree.keys) {
        Write(path + L'\\' + name, &below);
    }
    if (pTree == nullptr) {
        DeleteEmptyKey(path);
    }
}

} // namespace

std::optional<CKeyTree> ReadKeyTree(const WideText& path)
{
    CKey key(path);
    if (!key.Open()) {
        return std::nullopt;
    }
    CKeyTree tree;
    tree.values = ReadValues(key);
    for (const WideText& name : ReadSubkeys(key)) {
        if (const std::optional<CKeyTree> below = ReadKeyTree(path + L'\\' + name)) {
            tree.keys[name] = *below;
        }
    }
    return tree;
}

void WriteKeyTree(const WideText& path, const std::optional<CKeyTree>& tree)
{
    Write(path, tree ? &*tree : nullptr);
}

void DeleteEmptyKey(const WideText& path)
{
    DWORD cValues = 0;
    {
        CKey key(path);
        if (!key.Open()) {
            return;
        }
        key.Require(RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                     &cValues, nullptr, nullptr, nullptr, nullptr));
    }
    if (cValues == 0) {
        // Fails for a key with subkeys, which is as it should be.
        RegDeleteKeyW(HKEY_LOCAL_MACHINE, path.c_str());
    }
}
