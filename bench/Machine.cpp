#include "Machine.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "GinaNames.h"
#include "StandinGina.h"
#include "TestPlugin.h"

namespace {

constexpr WCHAR VOLATILE_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Volatile");
constexpr WCHAR LOG_KEY[] = TEXT("Software\\ORX\\Security\\Debug");
constexpr DWORD AN_HOUR = 3600;

template <typename Function>
Function FindExport(HMODULE hModule, const char* szExport)
{
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(hModule, szExport)));
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

void SetText(const WCHAR* szKey, const Text& name, const Text& text)
{
    SetValue(szKey, name.c_str(), REG_SZ, text.c_str(), (text.size() + 1) * sizeof(WCHAR));
}

void SetNumber(const WCHAR* szKey, const WCHAR* szName, DWORD dwNumber)
{
    SetValue(szKey, szName, REG_DWORD, &dwNumber, sizeof(dwNumber));
}

void LookUp(const WCHAR* szKey, const WCHAR* szName)
{
    HKEY hKey = nullptr;
    BYTE data[520];
    DWORD cbData = sizeof(data);
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, KEY_READ, &hKey);
    RegQueryValueExW(hKey, szName, nullptr, nullptr, data, &cbData);
    RegCloseKey(hKey);
}

Text CopyOf(char chKind, int nCopy)
{
    const std::string name = chKind + std::to_string(nCopy) + ".dll";
    return Text(name.begin(), name.end());
}

HMODULE Load(const Text& name)
{
    const HMODULE hModule = LoadLibraryW(name.c_str());
    if (hModule == nullptr) {
        std::fprintf(stderr, "cannot load %s\n", std::string(name.begin(), name.end()).c_str());
        std::exit(1);
    }
    return hModule;
}

HMODULE LoadWithExports(const Text& name, bool bPlugin)
{
#define EXPORT_OF_GINA(NAME, RESULT) #NAME,
#define EXPORT_OF_PLUGIN(NAME, RESULT) "LUM" #NAME,
    static constexpr const char* GINA_EXPORTS[] = {STANDIN_CALLS(EXPORT_OF_GINA)};
    static constexpr const char* PLUGIN_EXPORTS[] = {PLUGIN_CALLS(EXPORT_OF_PLUGIN)};
    const HMODULE hModule = Load(name);
    const auto lookUp = [=](const char* szExport) { GetProcAddress(hModule, szExport); };
    if (bPlugin) {
        std::for_each(std::begin(PLUGIN_EXPORTS), std::end(PLUGIN_EXPORTS), lookUp);
    } else {
        std::for_each(std::begin(GINA_EXPORTS), std::end(GINA_EXPORTS), lookUp);
    }
    return hModule;
}

void Configure(int nPlugins, DWORD dwMask)
{
    Text plugins;
    for (int n = 1; n <= nPlugins; ++n) {
        plugins += (n > 1 ? TEXT(",") : TEXT("")) + CopyOf('p', n);
    }
    SetText(OWN_KEY, TEXT("Plugins"), plugins);
    SetText(OWN_KEY, TEXT("GinaDLL"), TEXT("bench_gina.dll"));
    SetNumber(OWN_KEY, MASK_VALUE, dwMask);
    SetNumber(OWN_KEY, TEXT("PipeInterval"), AN_HOUR);
    SetNumber(OWN_KEY, TEXT("MonitorInterval"), AN_HOUR);
    const char* szTemp = std::getenv("TEMP");
    const std::string log = std::string(szTemp != nullptr ? szTemp : ".") + "/bench.log";
    SetText(LOG_KEY, LUM_GINA_APP, Text(log.begin(), log.end()));
    std::remove(log.c_str());
}

CWinlogonTable::CWinlogonTable()
{
    std::fill(std::begin(entries), std::end(entries), reinterpret_cast<PVOID>(AnswerTrue));
}

CWinlogon::CWinlogon(bool bFirst)
{
    SetNumber(VOLATILE_KEY, TEXT("InstanceCount"), bFirst ? 0 : 1);
    m_hLibrary = Load(HOST_GINA);
    DWORD dwVersion = 0;
    const auto pfnNegotiate = FindExport<BOOL(WINAPI*)(DWORD, PDWORD)>(m_hLibrary, "WlxNegotiate");
    const auto pfnInitialize =
        FindExport<BOOL(WINAPI*)(LPWSTR, HANDLE, PVOID, PVOID, PVOID*)>(m_hLibrary, "WlxInitialize");
    m_pfnIsLockOk = FindExport<BOOL(WINAPI*)(PVOID)>(m_hLibrary, "WlxIsLockOk");
    if (!pfnNegotiate(WLX_VERSION_1_4, &dwVersion) ||
        !pfnInitialize(nullptr, nullptr, nullptr, m_table.entries, &m_pContext))
    {
        std::fprintf(stderr, "the library does not start\n");
        std::exit(1);
    }
}

CWinlogon::~CWinlogon()
{
    FindExport<void(WINAPI*)(PVOID, DWORD)>(m_hLibrary, "WlxShutdown")(m_pContext, 0);
    FreeLibrary(m_hLibrary);
}

CHooks::CHooks(int nBehind)
{
    m_loaded.push_back(Load(TEXT("bench_gina.dll")));
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
