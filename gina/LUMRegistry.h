#pragma once

#include "CriticalSection.h"
#include "GlobalObject.h"
#include "Operation.h"
#include "Owned.h"
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
/// Every read goes to the registry and every write is immediate. May be used from all threads: an operation
/// locks the object for as long as it takes. The plugin list operations never throw.
class CLUMRegistry : public CGlobalObject
{
public:
    /// A value object that cannot be made stays null, with a warning. Operations that need it report that.
    CLUMRegistry(const WCHAR* szAPPArg, const WCHAR* szMTMArg);
    ~CLUMRegistry();
    CLUMRegistry(const CLUMRegistry&) = delete;
    CLUMRegistry& operator=(const CLUMRegistry&) = delete;

    /// Reads Plugins again. False, and no entries, when it cannot be read.
    bool ParsePlugins() noexcept;

    /// The number of entries, empty ones included; with bReparse after reading Plugins again.
    DWORD GetNumPlugins(bool bReparse) noexcept;

    /// Copies one entry into a buffer of cchPlugin characters, cut to fit and terminated.
    bool GetPlugin(WCHAR* szPlugin, DWORD cchPlugin, DWORD dwIndex) noexcept;

    /// Whether an entry equals the name, ignoring case.
    bool IsPluginListed(const WCHAR* szPlugin) noexcept;

    /// Appends the name unless it is listed. The list is cut at 259 characters.
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

    COwned<CRegistryString> m_pPlugins;
    COwned<CRegistryString> m_pGinaDLL;
    COwned<CRegistryDword> m_pEnabled;
    COwned<CRegistryDword> m_pInstanceCount;
    COwned<CRegistryDword> m_pRegistryMonitorInterval;
    COwned<CRegistryDword> m_pPipeInterval;
    COwned<CRegistryDword> m_pTimeout;
    /// The entries of Plugins as they were read last.
    DWORD m_dwNumPlugins = 0;
    COwned<COwnedText[]> m_szPlugins;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CLUMRegistry");

    struct CPluginsText
    {
        WCHAR sz[NAME_CAPACITY] = {};
    };

    /// Runs one operation: its body works on values and the parsed list with the lock held.
    template <typename OnException, typename Body>
    auto RunLocked(CTracePoint point, OnException onException, Body body, FailureWarning warning);
    template <typename Body>
    bool RunListOperation(CTracePoint point, Body body) noexcept;
    template <typename Body>
    bool RunRead(CTracePoint point, Body body);
    template <typename Body>
    bool RunWrite(CTracePoint point, Body body);

    bool Parse();
    bool Add(const WCHAR* szPlugin);
    bool Remove(const WCHAR* szPlugin);
    bool ReadPlugins(CPluginsText& plugins);
    template <typename Build>
    void WritePlugins(Build build);

    bool ReadDword(CTracePoint point, const COwned<CRegistryDword>& pValue, const WCHAR* szValueName,
                   DWORD* pdwValue, bool bRefresh);

    CCriticalSection m_lock;
};
