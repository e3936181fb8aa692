#include "Machine.h"

#include <algorithm>

#include "SetupError.h"
#include "Text.h"

namespace {

constexpr WCHAR DEBUG_KEY[] = TEXT("Software\\ORX\\Security\\Debug");
constexpr WCHAR LOG_VALUE[] = TEXT("LUM_GINA");
constexpr WCHAR OWN_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina");
constexpr WCHAR MASK_VALUE[] = TEXT("Debug");
constexpr WCHAR PASSTHROUGH_VALUE[] = TEXT("GinaDLL");
constexpr WCHAR PLUGINS_VALUE[] = TEXT("Plugins");

void Check(LONG lResult, const WCHAR* szKey, const WCHAR* szValue)
{
    if (lResult != ERROR_SUCCESS) {
        throw CSetupError(Format("cannot write %s of HKEY_LOCAL_MACHINE\\%s: error %d",
                                 ToNarrow(szValue).c_str(), ToNarrow(szKey).c_str(),
                                 static_cast<int>(lResult)));
    }
}

/// Calls change(key) with a key under HKEY_LOCAL_MACHINE, created if it is not there.
template <typename Change>
void ChangeKey(const WCHAR* szKey, const WCHAR* szValue, Change change)
{
    HKEY hKey = nullptr;
    Check(RegCreateKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                          nullptr, &hKey, nullptr),
          szKey, szValue);
    const LONG lResult = change(hKey);
    RegCloseKey(hKey);
    Check(lResult, szKey, szValue);
}

void SetValue(const WCHAR* szKey, const WCHAR* szValue, DWORD dwType, const void* pData, std::size_t cbData)
{
    ChangeKey(szKey, szValue, [&](HKEY hKey) {
        return RegSetValueExW(hKey, szValue, 0, dwType, static_cast<const BYTE*>(pData),
                              static_cast<DWORD>(cbData));
    });
}

void SetText(const WCHAR* szKey, const WCHAR* szValue, const std::string& text)
{
    const WideText wide = ToWide(text);
    SetValue(szKey, szValue, REG_SZ, wide.c_str(), (wide.size() + 1) * sizeof(WCHAR));
}

void DeleteValue(const WCHAR* szKey, const WCHAR* szValue)
{
    ChangeKey(szKey, szValue, [&](HKEY hKey) {
        const LONG lResult = RegDeleteValueW(hKey, szValue);
        return lResult == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : lResult;
    });
}

/// A text of the library's configuration, as the library reads it; empty when there is none.
std::string GetText(const WCHAR* szValue)
{
    HKEY hKey = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, OWN_KEY, 0, KEY_READ, &hKey) != ERROR_SUCCESS) {
        return std::string();
    }
    WCHAR szText[MAX_PATH + 1] = {};
    DWORD cbText = MAX_PATH * sizeof(WCHAR);
    const LONG lResult =
        RegQueryValueExW(hKey, szValue, nullptr, nullptr, reinterpret_cast<BYTE*>(szText), &cbText);
    RegCloseKey(hKey);
    return lResult == ERROR_SUCCESS ? ToNarrow(szText) : std::string();
}

} // namespace

CMachine::CMachine(const COptions& options)
    : m_registry(options.registry, CRegistryFile::Absence::IsNewMachine)
{
    if (!options.setup.empty()) {
        CRegistryFile::Import(options.setup);
    }
    if (options.traceLog.empty()) {
        DeleteValue(DEBUG_KEY, LOG_VALUE);
    } else {
        SetText(DEBUG_KEY, LOG_VALUE, options.traceLog);
        SetValue(OWN_KEY, MASK_VALUE, REG_DWORD, &options.dwTraceMask, sizeof(options.dwTraceMask));
    }
    if (!options.standin.empty()) {
        SetText(OWN_KEY, PASSTHROUGH_VALUE, options.standin);
    }
    const std::string passthrough = GetText(PASSTHROUGH_VALUE);
    m_standin = passthrough.empty() ? "msgina.dll" : passthrough;
}

std::vector<std::string> CMachine::GetPlugins()
{
    std::vector<std::string> plugins;
    const std::string text = GetText(PLUGINS_VALUE);
    for (std::size_t nBegin = 0; nBegin < text.size();) {
        const std::size_t nEnd = std::min(text.find(',', nBegin), text.size());
        if (nEnd != nBegin) {
            plugins.push_back(text.substr(nBegin, nEnd - nBegin));
        }
        nBegin = nEnd + 1;
    }
    return plugins;
}
