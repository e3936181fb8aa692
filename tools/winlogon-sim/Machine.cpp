#include "Machine.h"

#include "SetupError.h"
#include "Text.h"

namespace {

constexpr WCHAR DEBUG_KEY[] = TEXT("Software\\ORX\\Security\\Debug");
constexpr WCHAR LOG_VALUE[] = TEXT("LUM_GINA");
constexpr WCHAR OWN_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina");
constexpr WCHAR MASK_VALUE[] = TEXT("Debug");
constexpr WCHAR PASSTHROUGH_VALUE[] = TEXT("GinaDLL");

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

/// The library's configured passthrough GINA; empty when there is none.
std::string GetPassthrough()
{
    HKEY hKey = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, OWN_KEY, 0, KEY_READ, &hKey) != ERROR_SUCCESS) {
        return std::string();
    }
    WCHAR szName[MAX_PATH + 1] = {};
    DWORD cbName = MAX_PATH * sizeof(WCHAR);
    const LONG lResult =
        RegQueryValueExW(hKey, PASSTHROUGH_VALUE, nullptr, nullptr, reinterpret_cast<BYTE*>(szName), &cbName);
    RegCloseKey(hKey);
    return lResult == ERROR_SUCCESS ? ToNarrow(szName) : std::string();
}

} // namespace

CMachine::CMachine(const COptions& options)
    : m_registry(options.registry, CRegistryFile::Absence::IsNewMachine)
{
    if (options.traceLog.empty()) {
        DeleteValue(DEBUG_KEY, LOG_VALUE);
    } else {
        SetText(DEBUG_KEY, LOG_VALUE, options.traceLog);
        SetValue(OWN_KEY, MASK_VALUE, REG_DWORD, &options.dwTraceMask, sizeof(options.dwTraceMask));
    }
    if (!options.standin.empty()) {
        SetText(OWN_KEY, PASSTHROUGH_VALUE, options.standin);
    }
    const std::string passthrough = GetPassthrough();
    m_standin = passthrough.empty() ? "msgina.dll" : passthrough;
}
