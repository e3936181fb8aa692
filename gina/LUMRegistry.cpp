#include "LUMRegistry.h"

#include <new>

#include "CompareNames.h"
#include "Exceptions.h"
#include "Operation.h"

namespace {

constexpr WCHAR VOLATILE_KEY[] = TEXT("SOFTWARE\\ORX\\LUM\\Gina\\Volatile");
constexpr WCHAR TXT_KEY_NOT_LOADED[] = TEXT("LUM Registry key could not be loaded");
constexpr DWORD NO_VALUE_OBJECT = 0xFFFFFFFF;
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
constexpr CValueSettings ENABLED{TEXT("Enabled"), true, true};
constexpr CValueSettings INSTANCE_COUNT{TEXT("InstanceCount"), true, true};

template <typename Value>
std::unique_ptr<Value> MakeValue(const CGlobalObject& owner, const CValueSettings& settings, bool bCreate)
{
    return std::make_unique<Value>(owner.szAPP, owner.szMTM, HKEY_LOCAL_MACHINE,
                                   settings.bVolatile ? VOLATILE_KEY : LUM_GINA_MTM, settings.szValueName,
                                   KEY_ALL_ACCESS, bCreate, true, true, true, true,
                                   settings.bVolatile ? REG_OPTION_VOLATILE : REG_OPTION_NON_VOLATILE);
}

/// Makes a value object; one that cannot be made is done without.
template <typename Value>
void LoadValue(const CGlobalObject& owner, std::unique_ptr<Value>& pValue, const CValueSettings& settings,
               bool bNoCreate = false)
{
    try {
        pValue = MakeValue<Value>(owner, settings, settings.bCreate && !bNoCreate);
    } catch (...) {
        CKeyWarning(LUM_GINA_ORIGIN, TXT_KEY_NOT_LOADED, settings.szValueName);
    }
}

template <typename Value>
Value& Needed(const CGlobalObject& owner, const std::unique_ptr<Value>& pValue, const WCHAR* szValueName)
{
    if (pValue == nullptr) {
        throw CUnableToReadRegistryException(owner, szValueName, NO_VALUE_OBJECT);
    }
    return *pValue;
}

/// A volatile value, made on the spot when it could not be made before.
CRegistryDword& Made(const CGlobalObject& owner, std::unique_ptr<CRegistryDword>& pValue,
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

void RequirePluginName(const CGlobalObject& owner, const WCHAR* szPlugin)
{
    if (szPlugin == nullptr) {
        throw CBadArgException(owner, TEXT("szPlugin"));
    }
}

} // namespace

CLUMRegistry::CLUMRegistry(const WCHAR* szAPPArg, const WCHAR* szMTMArg, bool bNoCreate)
    : CGlobalObject(szAPPArg, szMTMArg)
{
    const CConstructionTrace trace(*this, s_szClass);
    LoadValue(*this, m_pPlugins, PLUGINS, bNoCreate);
    LoadValue(*this, m_pGinaDLL, GINA_DLL, bNoCreate);
    LoadValue(*this, m_pEnabled, ENABLED, bNoCreate);
    LoadValue(*this, m_pTimeout, TIMEOUT_SECONDS, bNoCreate);
    LoadValue(*this, m_pInstanceCount, INSTANCE_COUNT, bNoCreate);
    LoadValue(*this, m_pPipeInterval, PIPE_INTERVAL, bNoCreate);
    LoadValue(*this, m_pRegistryMonitorInterval, MONITOR_INTERVAL, bNoCreate);
    ParsePlugins();
}

CLUMRegistry::~CLUMRegistry()
{
    const CDestructionTrace trace(*this, s_szClass);
}

/// One operation on the list of plugins, with the parsed list locked.
template <typename Body>
bool CLUMRegistry::RunListOperation(CTracePoint point, Body body) noexcept
{
    const COperation op(*this, s_szClass, point);
    const CCriticalSection::CLock lock(m_PluginsLock);
    return op.Run(Absorb<CBadArgException, CMemAllocException, CUnableToReadRegistryException,
                         CUnableToWriteRegistryException>(),
                  body, FailureWarning::UnlessRaised);
}

bool CLUMRegistry::ParsePlugins() noexcept
{
    return RunListOperation(TEXT("ParsePlugins"), [this] { return Parse(); });
}

bool CLUMRegistry::Parse()
{
    m_szPlugins.clear();
    const Text plugins = ReadPlugins();
    if (plugins.empty()) {
        CNoPluginsNotification{LUM_GINA_ORIGIN};
        return true;
    }
    try {
        std::size_t nStart = 0;
        for (std::size_t nComma = plugins.find(SEPARATOR); nComma != Text::npos;
             nComma = plugins.find(SEPARATOR, nStart))
        {
            m_szPlugins.push_back(plugins.substr(nStart, nComma - nStart));
            nStart = nComma + 1;
        }
        m_szPlugins.push_back(plugins.substr(nStart));
    } catch (const std::bad_alloc&) {
        m_szPlugins.clear();
        throw CMemAllocException(*this, TEXT("m_szPlugins"));
    }
    return true;
}

/// The value as it stands in the registry; empty when the read comes to nothing.
CLUMRegistry::Text CLUMRegistry::ReadPlugins() const
{
    WCHAR szPlugins[CRegistryString::MAX_CHARACTERS + 1] = {};
    CRegistryString& value = Needed(*this, m_pPlugins, PLUGINS.szValueName);
    return value.GetRegistryString(szPlugins, CRegistryString::MAX_CHARACTERS + 1, true) ? Text(szPlugins)
                                                                                         : Text();
}

DWORD CLUMRegistry::GetNumPlugins(bool bReparse) noexcept
{
    const COperation op(*this, s_szClass, TEXT("GetNumPlugins"));
    const CCriticalSection::CLock lock(m_PluginsLock);
    return op.Run(Absorb<>(), [&] {
        const bool bParsed = !bReparse || ParsePlugins();
        return bParsed ? static_cast<DWORD>(m_szPlugins.size()) : 0;
    });
}

bool CLUMRegistry::GetPlugin(WCHAR* szPlugin, DWORD cchPlugin, DWORD dwIndex) noexcept
{
    return RunListOperation(TEXT("GetPlugin"), [&] {
        RequirePluginName(*this, szPlugin);
        if (dwIndex >= m_szPlugins.size() || cchPlugin == 0) {
            return false;
        }
        const Text& entry = m_szPlugins[dwIndex];
        if (cchPlugin <= entry.size()) {
            CStringWarning(*this, ERR_STRING_TOO_LONG, entry.c_str());
        }
        szPlugin[entry.copy(szPlugin, cchPlugin - 1)] = 0;
        return true;
    });
}

bool CLUMRegistry::IsPluginListed(const WCHAR* szPlugin) noexcept
{
    const COperation op(*this, s_szClass, TEXT("IsPluginListed"));
    const CCriticalSection::CLock lock(m_PluginsLock);
    const auto body = [&] {
        if (!ParsePlugins()) {
            return false;
        }
        for (const Text& entry : m_szPlugins) {
            if (EqualNames(entry.c_str(), szPlugin)) {
                return true;
            }
        }
        return false;
    };
    // Not to be listed is an answer, not a failure.
    return op.Run(Absorb<>(), body, FailureWarning::Never);
}

bool CLUMRegistry::AddPlugin(const WCHAR* szPlugin) noexcept
{
    return RunListOperation(TEXT("AddPlugin"), [&] { return Add(szPlugin); });
}

bool CLUMRegistry::Add(const WCHAR* szPlugin)
{
    RequirePluginName(*this, szPlugin);
    if (IsPluginListed(szPlugin)) {
        return true;
    }
    WCHAR szOldPlugins[CRegistryString::MAX_CHARACTERS + 1];
    CRegistryString& value = Needed(*this, m_pPlugins, PLUGINS.szValueName);
    if (!value.GetRegistryString(szOldPlugins, CRegistryString::MAX_CHARACTERS + 1, true)) {
        return true;
    }
    Text szNewPlugins;
    try {
        szNewPlugins = szOldPlugins;
        if (!szNewPlugins.empty()) {
            szNewPlugins += SEPARATOR;
        }
        szNewPlugins += szPlugin;
    } catch (const std::bad_alloc&) {
        throw CMemAllocException(*this, TEXT("szNewPlugins"));
    }
    value.SetRegistryString(szNewPlugins.c_str(), true);
    ParsePlugins();
    return true;
}

bool CLUMRegistry::RemovePlugin(const WCHAR* szPlugin) noexcept
{
    return RunListOperation(TEXT("RemovePlugin"), [&] { return Remove(szPlugin); });
}

bool CLUMRegistry::Remove(const WCHAR* szPlugin)
{
    RequirePluginName(*this, szPlugin);
    if (!IsPluginListed(szPlugin)) {
        return true;
    }
    // IsPluginListed has just parsed what the registry holds.
    Text szNewPlugins;
    bool bFound = false;
    bool bFirst = true;
    for (const Text& entry : m_szPlugins) {
        if (!bFound && EqualNames(entry.c_str(), szPlugin)) {
            bFound = true;
            continue;
        }
        if (!bFirst) {
            szNewPlugins += SEPARATOR;
        }
        bFirst = false;
        szNewPlugins += entry;
    }
    Needed(*this, m_pPlugins, PLUGINS.szValueName).SetRegistryString(szNewPlugins.c_str(), true);
    return true;
}

bool CLUMRegistry::GetGinaDLL(WCHAR* szDest, DWORD cchDest, bool bRefresh)
{
    const COperation op(*this, s_szClass, TEXT("GetGinaDLL"));
    return op.Run(PassOn<Absorb<CBadArgException>, CUnableToReadRegistryException>(), [&] {
        return Needed(*this, m_pGinaDLL, GINA_DLL.szValueName).GetRegistryString(szDest, cchDest, bRefresh);
    });
}

bool CLUMRegistry::ReadDword(CTracePoint point, const std::unique_ptr<CRegistryDword>& pValue,
                             const WCHAR* szValueName, DWORD* pdwValue, bool bRefresh)
{
    const COperation op(*this, s_szClass, point);
    return op.Run(PassOn<Absorb<CBadArgException>, CUnableToReadRegistryException>(),
                  [&] { return Needed(*this, pValue, szValueName).GetRegistryDword(pdwValue, bRefresh); });
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
    const COperation op(*this, s_szClass, TEXT("IncreaseInstanceCount"));
    return op.Run(PassOn<Absorb<>, CUnableToWriteRegistryException>(), [&] {
        CRegistryDword& value = Made(*this, m_pInstanceCount, INSTANCE_COUNT);
        DWORD dwCount = 0;
        bool bRead = false;
        try {
            bRead = value.GetRegistryDword(&dwCount, true);
        } catch (...) {
            // A count that cannot be read must not be written either: it would start anew.
            Absorb<CUnableToReadRegistryException>()(op);
        }
        if (bRead) {
            value.SetRegistryDword(dwCount + 1, true);
        }
        return true;
    });
}

bool CLUMRegistry::SetEnabled(DWORD dwEnabled)
{
    const COperation op(*this, s_szClass, TEXT("SetEnabled"));
    return op.Run(PassOn<Absorb<>, CUnableToWriteRegistryException>(),
                  [&] { return Made(*this, m_pEnabled, ENABLED).SetRegistryDword(dwEnabled, true); });
}
