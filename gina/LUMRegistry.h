#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CriticalSection.h"
#include "GlobalObject.h"
#include "Operation.h"
#include "RegistryDword.h"
#include "RegistryString.h"

/// The own configuration: key LUM_GINA_MTM of HKEY_LOCAL_MACHINE and its volatile subkey, which lasts
/// until the machine restarts.
///
///     Plugins          REG_SZ     plugin DLLs in load order, separated by ","
///     GinaDLL          REG_SZ     the standard GINA that is passed through to
///     Timeout          REG_DWORD  seconds, handed to Winlogon
///     PipeInterval     REG_DWORD  seconds, period of the control channel; not made when missing
///     MonitorInterval  REG_DWORD  seconds, period of the registry monitor; not made when missing
///     Volatile\Enabled        REG_DWORD  1 while the host is in service
///     Volatile\InstanceCount  REG_DWORD  host initialisations since the machine started
///
/// Every read goes to the registry and every write is immediate. May be used from all threads: the
/// parsed list of plugins has a lock. The plugin list operations never throw.
class CLUMRegistry : public CGlobalObject
{
public:
    /// A value object that cannot be made stays null and is warned of; operations that need it say so.
    /// bNoCreate: make no value that is missing; its object stays null then.
    CLUMRegistry(const WCHAR* szAPPArg, const WCHAR* szMTMArg, bool bNoCreate = false);
    ~CLUMRegistry();
    CLUMRegistry(const CLUMRegistry&) = delete;
    CLUMRegistry& operator=(const CLUMRegistry&) = delete;

    /// Reads Plugins again. False, and no entries, when it cannot be read.
    bool ParsePlugins() noexcept;

    /// The number of entries, empty ones included; with bReparse after reading Plugins again.
    DWORD GetNumPlugins(bool bReparse) noexcept;

    /// Copies one entry into a buffer of cchPlugin characters, cut to fit and terminated.
    bool GetPlugin(WCHAR* szPlugin, DWORD cchPlugin, DWORD dwIndex) noexcept;

    /// Whether an entry equals the name; letter case does not count.
    bool IsPluginListed(const WCHAR* szPlugin) noexcept;

    /// Appends the name unless it is listed. What is longer than 259 characters is cut.
    bool AddPlugin(const WCHAR* szPlugin) noexcept;

    /// Removes the first entry of that name with one comma; true also when there is none.
    bool RemovePlugin(const WCHAR* szPlugin) noexcept;

    // These throw CUnableToReadRegistryException when there is nothing to read.
    bool GetGinaDLL(WCHAR* szDest, DWORD cchDest, bool bRefresh);
    bool GetTimeout(DWORD* pdwTimeout, bool bRefresh);
    bool GetPipeInterval(DWORD* pdwInterval, bool bRefresh);
    bool GetRegistryMonitorInterval(DWORD* pdwInterval, bool bRefresh);
    bool GetInstanceCount(DWORD* pdwCount, bool bRefresh);

    // These make the value when it is missing, and throw CUnableToWriteRegistryException when they
    // cannot write.
    bool IncreaseInstanceCount();
    bool SetEnabled(DWORD dwEnabled);

private:
    static constexpr const WCHAR* s_szClass = TEXT("CLUMRegistry");

    using Text = std::basic_string<WCHAR>;

    template <typename Body>
    bool RunListOperation(CTracePoint point, Body body) noexcept;
    bool Parse();
    bool Add(const WCHAR* szPlugin);
    bool Remove(const WCHAR* szPlugin);
    Text ReadPlugins() const;

    bool ReadDword(CTracePoint point, const std::unique_ptr<CRegistryDword>& pValue, const WCHAR* szValueName,
                   DWORD* pdwValue, bool bRefresh);

    std::unique_ptr<CRegistryString> m_pPlugins;
    std::unique_ptr<CRegistryString> m_pGinaDLL;
    std::unique_ptr<CRegistryDword> m_pEnabled;
    std::unique_ptr<CRegistryDword> m_pInstanceCount;
    std::unique_ptr<CRegistryDword> m_pRegistryMonitorInterval;
    std::unique_ptr<CRegistryDword> m_pPipeInterval;
    std::unique_ptr<CRegistryDword> m_pTimeout;

    std::vector<Text> m_szPlugins;
    CCriticalSection m_PluginsLock;
};
