#include "Machine.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "DllDriver.h"
#include "SafeStartNames.h"

namespace {

constexpr WCHAR LOG_KEY[] = TEXT("Software\\ORX\\Security\\Debug");
constexpr DWORD AN_HOUR = 3600;

// All that the library or a measurement writes, bottom up, since a key with subkeys cannot be deleted.
const WCHAR* const KEYS[] = {LEFT_OUT_KEY, START_KEY, VOLATILE_KEY, LUM_GINA_MTM,
                             GINAS_KEY,    LOG_KEY,   WINLOGON_KEY};

template <typename Function>
Function FindExport(HMODULE hModule, const char* szExport)
{
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(hModule, szExport)));
}

HMODULE Load(const Text& name)
{
    const HMODULE hModule = LoadLibraryW(name.c_str());
    Require(hModule != nullptr, std::string(name.begin(), name.end()).c_str());
    return hModule;
}

void SetValue(const WCHAR* szKey, const WCHAR* szName, DWORD dwType, const void* pData, std::size_t cbData)
{
    HKEY hKey = nullptr;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &hKey, nullptr);
    RegSetValueExW(hKey, szName, 0, dwType, static_cast<const BYTE*>(pData), static_cast<DWORD>(cbData));
    RegCloseKey(hKey);
}

BOOL WINAPI AnswerTrue(HANDLE, DWORD)
{
    return TRUE;
}

} // namespace

void Require(bool bDone, const char* szWhat)
{
    if (!bDone) {
        std::fprintf(stderr, "%s failed\n", szWhat);
        std::exit(1);
    }
}

void SetText(const WCHAR* szKey, const WCHAR* szName, const Text& text)
{
    SetValue(szKey, szName, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(WCHAR));
}

void SetNumber(const WCHAR* szKey, const WCHAR* szName, DWORD dwNumber)
{
    SetValue(szKey, szName, REG_DWORD, &dwNumber, sizeof(dwNumber));
}

void SetRecord(const Text& gina, bool bTerminator)
{
    SetText(LUM_GINA_MTM, gina.c_str(),
            GINAS_KEY + (TEXT(",") + gina) + TEXT(",msgina.dll,") +
                (bTerminator ? TEXT("1,1,0,0") : TEXT("0,0,0,0")));
}

void LookUp(const WCHAR* szKey, const WCHAR* szName, WCHAR (&szText)[NAME_CAPACITY])
{
    HKEY hKey = nullptr;
    DWORD cbText = sizeof(szText);
    szText[0] = 0;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, KEY_READ, &hKey);
    RegQueryValueExW(hKey, szName, nullptr, nullptr, reinterpret_cast<BYTE*>(szText), &cbText);
    RegCloseKey(hKey);
}

Text CopyOf(char chKind, int nCopy)
{
    const std::string name = chKind + std::to_string(nCopy) + ".dll";
    return Text(name.begin(), name.end());
}

HMODULE LoadWithExports(const Text& name, bool bPlugin)
{
    const HMODULE hModule = Load(name);
    if (bPlugin) {
        for (const char* szCall : CDrivenDll<TestPluginInterface>::CALLS) {
            GetProcAddress(hModule, (std::string("LUM") + szCall).c_str());
        }
    } else {
        for (const char* szCall : CDrivenDll<StandinInterface>::CALLS) {
            GetProcAddress(hModule, szCall);
        }
    }
    return hModule;
}

void Configure(int nPlugins, DWORD dwMask)
{
    std::for_each(std::begin(KEYS), std::end(KEYS),
                  [](const WCHAR* szKey) { RegDeleteKeyW(HKEY_LOCAL_MACHINE, szKey); });
    Text plugins;
    for (int n = 1; n <= nPlugins; ++n) {
        plugins += (n > 1 ? TEXT(",") : TEXT("")) + CopyOf('p', n);
    }
    SetText(WINLOGON_KEY, WINLOGON_GINA_DLL, HOST_GINA);
    SetText(LUM_GINA_MTM, PASSTHROUGH_VALUE, BENCH_GINA);
    SetRecord(BENCH_GINA, true);
    SetText(LUM_GINA_MTM, TEXT("Plugins"), plugins);
    SetNumber(LUM_GINA_MTM, MASK_VALUE, dwMask);
    SetNumber(LUM_GINA_MTM, TEXT("PipeInterval"), AN_HOUR);
    SetNumber(LUM_GINA_MTM, TEXT("MonitorInterval"), AN_HOUR);
    SetNumber(VOLATILE_KEY, INSTANCE_COUNT_VALUE, 1);
    SetText(LOG_KEY, LUM_GINA_APP, LOG_FILE);
    std::remove("bench.log");
}

void SetRecommended()
{
    SetNumber(LUM_GINA_MTM, SAFE_START, 2);
    SetNumber(LUM_GINA_MTM, EVENT_LOG_VALUE, 1);
}

CWinlogonTable::CWinlogonTable()
{
    std::fill(std::begin(entries), std::end(entries), reinterpret_cast<PVOID>(AnswerTrue));
}

CWinlogon::CWinlogon() : m_hLibrary(Load(HOST_GINA))
{
    DWORD dwVersion = 0;
    const auto pfnNegotiate = FindExport<BOOL(WINAPI*)(DWORD, PDWORD)>(m_hLibrary, "WlxNegotiate");
    const auto pfnInitialize =
        FindExport<BOOL(WINAPI*)(LPWSTR, HANDLE, PVOID, PVOID, PVOID*)>(m_hLibrary, "WlxInitialize");
    m_pfnIsLockOk = FindExport<BOOL(WINAPI*)(PVOID)>(m_hLibrary, "WlxIsLockOk");
    Require(pfnNegotiate(WLX_VERSION_1_4, &dwVersion) &&
                pfnInitialize(nullptr, nullptr, nullptr, m_table.entries, &m_pContext),
            "the library's start");
}

CWinlogon::~CWinlogon()
{
    FindExport<void(WINAPI*)(PVOID, DWORD)>(m_hLibrary, "WlxShutdown")(m_pContext, 0);
    FreeLibrary(m_hLibrary);
}

CHooks::CHooks(int nBehind)
{
    m_loaded.push_back(Load(BENCH_GINA));
    for (int n = 0; n <= nBehind; ++n) {
        const HMODULE hHook = Load(CopyOf('h', n));
        FindExport<void(WINAPI*)(HMODULE)>(hHook, "SetNext")(m_loaded.back());
        m_loaded.push_back(hHook);
    }
    m_pfnIsLockOk = FindExport<BOOL(WINAPI*)(PVOID)>(m_loaded.back(), "WlxIsLockOk");
}

CHooks::~CHooks()
{
    for (const HMODULE hModule : m_loaded) {
        FreeLibrary(hModule);
    }
}
