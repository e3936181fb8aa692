#include "LUMRegistry.h"

#include <algorithm>
#include <new>
#include <string>
#include <string_view>

#include "CallLocked.h"
#include "Exceptions.h"
#include "GinaNames.h"
#include "GuardedText.h"
#include "MachineValue.h"
#include "Operation.h"
#include "RequireArgument.h"

namespace {

constexpr WCHAR TXT_KEY_NOT_LOADED[] = TEXT("LUM Registry key could not be loaded");
constexpr WCHAR SEPARATOR = ',';

/// What the value objects differ in.
struct CValueSettings
{
    const WCHAR* szValueName;
    bool bVolatile;
    bool bCreate;
};

constexpr CValueSettings PLUGINS{TEXT("Plugins"), false, true};
constexpr CValueSettings GINA_DLL{TEXT("GinaDLL"), false, true};
constexpr CValueSettings TIMEOUT_SECONDS{TEXT("Timeout"), false, true};
constexpr CValueSettings PIPE_INTERVAL{TEXT("PipeInterval"), false, false};
constexpr CValueSettings MONITOR_INTERVAL{TEXT("MonitorInterval"), false, false};
constexpr CValueSettings ENABLED{ENABLED_VALUE, true, true};
constexpr CValueSettings INSTANCE_COUNT{INSTANCE_COUNT_VALUE, true, true};

/// Makes a value object, or reports why it stays null.
template <typename Value>
void LoadValue(const CGlobalObject& owner, COwned<Value>& pValue, const CValueSettings& settings)
{
    try {
        const WCHAR* szSubKey = settings.bVolatile ? VOLATILE_KEY : LUM_GINA_MTM;
        const DWORD dwOptions = settings.bVolatile ? REG_OPTION_VOLATILE : REG_OPTION_NON_VOLATILE;
        pValue =
            OpenMachineValue<Value>(owner, szSubKey, settings.szValueName, settings.bCreate, true, dwOptions);
    } catch (...) {
        CKeyWarning(LUM_GINA_ORIGIN, TXT_KEY_NOT_LOADED, settings.szValueName);
    }
}

/// A volatile value. If it could not be made before, it is made now.
CRegistryDword& Made(const CGlobalObject& owner, COwned<CRegistryDword>& pValue,
                     const CValueSettings& settings)
{
    if (pValue == nullptr) {
        LoadValue(owner, pValue, settings);
    }
    if (pValue == nullptr) {
        throw CUnableToWriteRegistryException(owner, settings.szValueName, NO_VALUE_OBJECT);
    }
    return *pValue;
}

using Text = std::basic_string_view<WCHAR>;

/// N separators give N + 1 entries, empty ones included.
DWORD CountEntries(Text plugins) noexcept
{
    return 1 + static_cast<DWORD>(std::count(plugins.begin(), plugins.end(), SEPARATOR));
}

Text CutEntry(Text& rest) noexcept
{
    const Text entry = rest.substr(0, rest.find(SEPARATOR));
    rest.remove_prefix(std::min(entry.size() + 1, rest.size()));
    return entry;
}

/// The list without the first entry of that name.
std::basic_string<WCHAR> WithoutPlugin(Text plugins, Text plugin)
{
    std::basic_string<WCHAR> remaining;
    bool bFound = false;
    bool bFirst = true;
    for (DWORD dwLeft = CountEntries(plugins); dwLeft != 0; --dwLeft) {
        const Text entry = CutEntry(plugins);
        if (!bFound && EqualNames(entry, plugin)) {
            bFound = true;
            continue;
        }
        remaining.append(bFirst ? 0 : 1, SEPARATOR).append(entry);
        bFirst = false;
    }
    return remaining;
}

} // namespace

CLUMRegistry::CLUMRegistry(const WCHAR* szAPPArg, const WCHAR* szMTMArg) : CGlobalObject(szAPPArg, szMTMArg)
{
    const CConstructionTrace trace(*this, s_szClass);
    LoadValue(*this, m_pPlugins, PLUGINS);
    LoadValue(*this, m_pGinaDLL, GINA_DLL);
    LoadValue(*this, m_pEnabled, ENABLED);
    LoadValue(*this, m_pTimeout, TIMEOUT_SECONDS);
    LoadValue(*this, m_pInstanceCount, INSTANCE_COUNT);
    LoadValue(*this, m_pPipeInterval, PIPE_INTERVAL);
    LoadValue(*this, m_pRegistryMonitorInterval, MONITOR_INTERVAL);
    ParsePlugins();
}

CLUMRegistry::~CLUMRegistry()
{
    const CDestructionTrace trace(*this, s_szClass);
    const auto destroy = [this](const WCHAR* szMember, auto& member) {
        DeleteVariable(*this, szMember, [&] { member = {}; });
    };
    destroy(TEXT("m_szPlugins"), m_szPlugins);
    destroy(TEXT("m_pPlugins"), m_pPlugins);
    destroy(TEXT("m_pGinaDLL"), m_pGinaDLL);
    destroy(TEXT("m_pEnabled"), m_pEnabled);
    destroy(TEXT("m_pInstanceCount"), m_pInstanceCount);
    destroy(TEXT("m_pRegistryMonitorInterval"), m_pRegistryMonitorInterval);
    destroy(TEXT("m_pPipeInterval"), m_pPipeInterval);
    destroy(TEXT("m_pTimeout"), m_pTimeout);
}

template <typename OnException, typename Body>
auto CLUMRegistry::RunLocked(CTracePoint point, OnException onException, Body body, FailureWarning warning)
{
    const COperation op(*this, s_szClass, point);
    return op.Run(
        onException, [&] { return CallLocked(m_lock, body); }, warning);
}

template <typename Body>
bool CLUMRegistry::RunListOperation(CTracePoint point, Body body) noexcept
{
    return RunLocked(point, Absorb<CBadArgException, CMemAllocException>(), body,
                     FailureWarning::UnlessRaised);
}

bool CLUMRegistry::ParsePlugins() noexcept
{
    return RunListOperation(TEXT("ParsePlugins"), [this] { return Parse(); });
}

bool CLUMRegistry::Parse()
{
    m_dwNumPlugins = 0;
    m_szPlugins.Reset();
    CPluginsText plugins;
    if (!ReadPlugins(plugins) || *plugins.sz == 0) {
        CNoPluginsNotification{LUM_GINA_ORIGIN};
        return true;
    }
    Text rest(plugins.sz);
    const DWORD dwNumPlugins = CountEntries(rest);
    COwned<COwnedText[]> entries(new (std::nothrow) COwnedText[dwNumPlugins]);
    if (entries == nullptr) {
        throw CMemAllocException(*this, TEXT("m_szPlugins"));
    }
    for (DWORD dwIndex = 0; dwIndex < dwNumPlugins; ++dwIndex) {
        entries[dwIndex] = CopyText(*this, CutEntry(rest), TEXT("m_szPlugins"));
    }
    m_szPlugins = std::move(entries);
    m_dwNumPlugins = dwNumPlugins;
    return true;
}

/// The value as it stands in the registry.
bool CLUMRegistry::ReadPlugins(CPluginsText& plugins)
{
    CRegistryString& value = RequireValue(*this, m_pPlugins, PLUGINS.szValueName);
    return value.GetRegistryString(plugins.sz, NAME_CAPACITY, true);
}

template <typename Build>
void CLUMRegistry::WritePlugins(Build build)
{
    std::basic_string<WCHAR> szNewPlugins;
    try {
        szNewPlugins = build();
    } catch (const std::bad_alloc&) {
        throw CMemAllocException(*this, TEXT("szNewPlugins"));
    }
    RequireValue(*this, m_pPlugins, PLUGINS.szValueName).SetRegistryString(szNewPlugins.c_str(), true);
}

DWORD CLUMRegistry::GetNumPlugins(bool bReparse) noexcept
{
    const auto body = [&] {
        const bool bParsed = !bReparse || ParsePlugins();
        return bParsed ? m_dwNumPlugins : 0;
    };
    return RunLocked(TEXT("GetNumPlugins"), Absorb<>(), body, FailureWarning::Never);
}

bool CLUMRegistry::GetPlugin(WCHAR* szPlugin, DWORD cchPlugin, DWORD dwIndex) noexcept
{
    return RunListOperation(TEXT("GetPlugin"), [&] {
        RequireArgument(*this, szPlugin, TEXT("szPlugin"));
        if (dwIndex >= m_dwNumPlugins || cchPlugin == 0) {
            return false;
        }
        const Text entry(m_szPlugins[dwIndex]);
        if (cchPlugin <= entry.size()) {
            CStringWarning(*this, ERR_STRING_TOO_LONG, entry.data());
        }
        szPlugin[entry.copy(szPlugin, cchPlugin - 1)] = 0;
        return true;
    });
}

bool CLUMRegistry::IsPluginListed(const WCHAR* szPlugin) noexcept
{
    const auto isThatName = [=](const COwnedText& szEntry) { return EqualNames(szEntry, szPlugin); };
    const auto body = [&] {
        const bool bParsed = ParsePlugins();
        const COwnedText* pEntries = m_szPlugins;
        return bParsed && std::any_of(pEntries, pEntries + m_dwNumPlugins, isThatName);
    };
    return RunLocked(TEXT("IsPluginListed"), Absorb<>(), body, FailureWarning::UnlessRaised);
}

bool CLUMRegistry::AddPlugin(const WCHAR* szPlugin) noexcept
{
    return RunListOperation(TEXT("AddPlugin"), [&] { return Add(szPlugin); });
}

bool CLUMRegistry::Add(const WCHAR* szPlugin)
{
    RequireArgument(*this, szPlugin, TEXT("szPlugin"));
    if (IsPluginListed(szPlugin)) {
        return true;
    }
    CPluginsText oldPlugins;
    if (!ReadPlugins(oldPlugins)) {
        return true;
    }
    WritePlugins([&] {
        std::basic_string<WCHAR> plugins(oldPlugins.sz);
        return plugins.append(plugins.empty() ? 0 : 1, SEPARATOR).append(szPlugin);
    });
    ParsePlugins();
    return true;
}

bool CLUMRegistry::RemovePlugin(const WCHAR* szPlugin) noexcept
{
    return RunListOperation(TEXT("RemovePlugin"), [&] { return Remove(szPlugin); });
}

bool CLUMRegistry::Remove(const WCHAR* szPlugin)
{
    RequireArgument(*this, szPlugin, TEXT("szPlugin"));
    if (!IsPluginListed(szPlugin)) {
        return true;
    }
    CPluginsText oldPlugins;
    if (!ReadPlugins(oldPlugins)) {
        return false;
    }
    WritePlugins([&] { return WithoutPlugin(oldPlugins.sz, szPlugin); });
    return true;
}

template <typename Body>
bool CLUMRegistry::RunRead(CTracePoint point, Body body)
{
    return RunLocked(point, Handlers<PassOn<CUnableToReadRegistryException>, Absorb<CBadArgException>>(),
                     body, FailureWarning::UnlessRaised);
}

template <typename Body>
bool CLUMRegistry::RunWrite(CTracePoint point, Body body)
{
    return RunLocked(point, PassOn<CUnableToWriteRegistryException>(), body, FailureWarning::UnlessRaised);
}

bool CLUMRegistry::GetGinaDLL(WCHAR* szDest, DWORD cchDest, bool bRefresh)
{
    return RunRead(TEXT("GetGinaDLL"), [&] {
        return RequireValue(*this, m_pGinaDLL, GINA_DLL.szValueName)
            .GetRegistryString(szDest, cchDest, bRefresh);
    });
}

bool CLUMRegistry::ReadDword(CTracePoint point, const COwned<CRegistryDword>& pValue,
                             const WCHAR* szValueName, DWORD* pdwValue, bool bRefresh)
{
    return RunRead(
        point, [&] { return RequireValue(*this, pValue, szValueName).GetRegistryDword(pdwValue, bRefresh); });
}

bool CLUMRegistry::GetTimeout(DWORD* pdwTimeout, bool bRefresh)
{
    return ReadDword(TEXT("GetTimeout"), m_pTimeout, TIMEOUT_SECONDS.szValueName, pdwTimeout, bRefresh);
}

bool CLUMRegistry::GetPipeInterval(DWORD* pdwInterval, bool bRefresh)
{
    return ReadDword(TEXT("GetPipeInterval"), m_pPipeInterval, PIPE_INTERVAL.szValueName, pdwInterval,
                     bRefresh);
}

bool CLUMRegistry::GetRegistryMonitorInterval(DWORD* pdwInterval, bool bRefresh)
{
    return ReadDword(TEXT("GetRegistryMonitorInterval"), m_pRegistryMonitorInterval,
                     MONITOR_INTERVAL.szValueName, pdwInterval, bRefresh);
}

bool CLUMRegistry::GetInstanceCount(DWORD* pdwCount, bool bRefresh)
{
    return ReadDword(TEXT("GetInstanceCount"), m_pInstanceCount, INSTANCE_COUNT.szValueName, pdwCount,
                     bRefresh);
}

bool CLUMRegistry::IncreaseInstanceCount()
{
    return RunWrite(TEXT("IncreaseInstanceCount"), [&] {
        CRegistryDword& value = Made(*this, m_pInstanceCount, INSTANCE_COUNT);
        DWORD dwCount = 0;
        bool bRead = false;
        try {
            bRead = value.GetRegistryDword(&dwCount, true);
        } catch (CUnableToReadRegistryException& exception) {
            // A count that cannot be read is not written: it would start anew.
            exception.WriteIfUnwritten();
        }
        if (bRead) {
            value.SetRegistryDword(dwCount + 1, true);
        }
        return true;
    });
}

bool CLUMRegistry::SetEnabled(DWORD dwEnabled)
{
    return RunWrite(TEXT("SetEnabled"),
                    [&] { return Made(*this, m_pEnabled, ENABLED).SetRegistryDword(dwEnabled, true); });
}
