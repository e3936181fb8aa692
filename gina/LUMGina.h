#pragma once

#include <array>

#include <windows.h>
#include "WlxInterface.h"

#include "CallGate.h"
#include "GinaContext.h"
#include "GinaObject.h"
#include "LUMObject.h"
#include "LUMThreadObjects.h"
#include "LUMRegistry.h"
#include "Operation.h"
#include "SafeStart.h"
#include "WinlogonObject.h"
#include "WinlogonRegistry.h"
#include "chaining/RegistryManager.h"

/// The host: the one object behind the exported entry points. It owns every other long-lived object.
///
/// Created at process attach, destroyed at process detach. Operations run on Winlogon's thread unless they
/// say otherwise. An operation that fails returns its default result; it throws only where it says so.
class CLUMGina
{
public:
    /// Creates the members in order. One for which there is no memory stays null. If the constructor of one
    /// fails, it stays null, and so do all after it. Operations that need a member that is null return their
    /// default result. Throws nothing but CLUMInitializeFailException, for a null module handle.
    explicit CLUMGina(HINSTANCE hInstance);
    ~CLUMGina();
    CLUMGina(const CLUMGina&) = delete;
    CLUMGina& operator=(const CLUMGina&) = delete;

    /// Builds the GINA object list and tells Winlogon the interface version of the passthrough GINA, at most
    /// 1.4. Refuses a call that comes from a GINA being loaded: that GINA passes through to this library, and
    /// the two would load each other without end. Throws when "msgina.dll" is the last resort and cannot be
    /// loaded either.
    BOOL LUMWlxNegotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion);

    /// Initialises every object of the list, first to last; those that refuse are removed. What the last
    /// one stores through pWlxContext is the context that Winlogon passes to every later call.
    BOOL LUMWlxInitialize(LPWSTR lpWinsta, HANDLE hWlx, PVOID pvReserved, PVOID pWinlogonFunctions,
                          PVOID* pWlxContext);

    // The calls that go to the first object of the list, each with the arguments and the result of the
    // Wlx function of that name. They throw CNoGINAorPluginToCallException when the list is empty.
    BOOL LUMWlxActivateUserShell(PVOID pWlxContext, PWSTR pszDesktopName, PWSTR pszMprLogonScript,
                                 PVOID pEnvironment);
    void LUMWlxDisconnectNotify(PVOID pWlxContext);
    void LUMWlxDisplayLockedNotice(PVOID pWlxContext);
    void LUMWlxDisplaySASNotice(PVOID pWlxContext);
    BOOL LUMWlxDisplayStatusMessage(PVOID pWlxContext, HDESK hDesktop, DWORD dwOptions, PWSTR pTitle,
                                    PWSTR pMessage);
    BOOL LUMWlxGetConsoleSwitchCredentials(PVOID pWlxContext, PVOID pCredInfo);
    BOOL LUMWlxGetStatusMessage(PVOID pWlxContext, DWORD* pdwOptions, PWSTR pMessage, DWORD dwBufferSize);
    BOOL LUMWlxIsLockOk(PVOID pWlxContext);
    BOOL LUMWlxIsLogoffOk(PVOID pWlxContext);
    int LUMWlxLoggedOnSAS(PVOID pWlxContext, DWORD dwSasType, PVOID pReserved);
    int LUMWlxLoggedOutSAS(PVOID pWlxContext, DWORD dwSasType, PLUID pAuthenticationId, PSID pLogonSid,
                           PDWORD pdwOptions, PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo,
                           PVOID* pProfile);
    void LUMWlxLogoff(PVOID pWlxContext);
    BOOL LUMWlxNetworkProviderLoad(PVOID pWlxContext, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo);
    void LUMWlxReconnectNotify(PVOID pWlxContext);
    BOOL LUMWlxRemoveStatusMessage(PVOID pWlxContext);
    BOOL LUMWlxScreenSaverNotify(PVOID pWlxContext, BOOL* pSecure);
    void LUMWlxShutdown(PVOID pWlxContext, DWORD dwShutdownType);
    BOOL LUMWlxStartApplication(PVOID pWlxContext, PWSTR pszDesktopName, PVOID pEnvironment,
                                PWSTR pszCmdLine);
    int LUMWlxWkstaLockedSAS(PVOID pWlxContext, DWORD dwSasType);

    // Changes of the running system, after its initialisation. Any thread; they never throw.

    /// Loads and initialises a plugin, adds its name to the configuration and puts it into the list as the
    /// last plugin. Calls in flight may go through it or miss it. If any step fails: false, and the plugin is
    /// unloaded. A name that was added to the configuration before the failure stays there.
    bool LUMAddPluginDynamic(const WCHAR* szPlugin) noexcept;

    /// Tells the first plugin or GINA of that name to go, takes it out of the list, unloads it and takes the
    /// name out of the configuration. Waits a limited time for the calls in flight first. If they do not end:
    /// false, and the list and the configuration stay; at once from within one of these calls. A plugin that
    /// fails when it is told stays. One that has been told stays in the list if a call has come into it
    /// meanwhile and does not end; its name then leaves the configuration all the same.
    bool LUMRemovePluginDynamic(const WCHAR* szPlugin) noexcept;

    // What the control channel asks for; runs on its thread. These never throw.

    /// Starts or stops the registry monitor. True when it then is as wanted, also if there was nothing to do.
    bool LUMEnableActiveRegistryMonitoring(bool bEnable) noexcept;

    /// Stores the version of this library as one number: in the upper 16 bits the minor version and the
    /// build, combined with OR, in the lower 16 bits the revision. False, with nothing stored, when it cannot
    /// be read.
    bool LUMGetLUMGinaVersion(DWORD* pdwVersion) noexcept;

    /// Stops the service threads that run. False when one has not finished in time, as when it is inside a
    /// plugin: then do not destroy the host.
    bool StopThreads();
    /// Suspends for good the threads that StopThreads could not stop.
    void SuspendThreads() noexcept;

    DWORD m_dwNegotiatedWlxVersion;
    CGinaContext* m_pGinaContext;
    CGinaObjectList* m_pGinaObjectList;
    CWinlogonRegistry* m_pWinlogonRegistry;
    CLUMRegistry* m_pLUMRegistry;
    CRegistryManager* m_pRegistryManager;
    CLUMObject* m_pLUMObject;
    CLUMPipeThreadObject* m_pLUMPipeThreadObject;
    CLUMRegMonitorThreadObject* m_pLUMRegMonitorThreadObject;
    CWinlogonObject* m_pWinlogonObject;
    /// Guards m_pGinaObjectList.
    CCallGate m_gate;
    /// True while LUMWlxNegotiate or LUMWlxInitialize runs.
    bool m_bStarting = false;
    CSafeStart m_safeStart;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CLUMGina");

    void CreateMembers(HINSTANCE hInstance);

    template <typename Body>
    bool RunUnlessNested(const COperation& op, Body body);
    void LoadPlugins(const COperation& op, DWORD dwWinlogonVersion);
    void LoadPlugin(DWORD dwIndex, DWORD dwWinlogonVersion);
    void LoadPassthroughGina(const COperation& op, DWORD dwWinlogonVersion);
    void AddConfiguredPassthroughGina(DWORD dwWinlogonVersion);
    bool TellVersion(const COperation& op, DWORD* pdwDllVersion) noexcept;
    bool AgreeOnVersion(DWORD* pdwDllVersion);
    template <typename Object>
    void AddGinaObject(const WCHAR* szGinaDLL, DWORD dwWinlogonVersion);

    void RequireGinaObjects() const;
    DWORD ReadSetting(bool (CLUMRegistry::*pfnGet)(DWORD*, bool), DWORD dwDefault) noexcept;
    template <typename Initialize>
    void InitializeObjects(Initialize initialize);
    void NoteInitialization(const CGinaObject& object, bool bLast) noexcept;
    void RemoveNode(GinaNode* pNode);
    void FinishInitialization(const COperation& op, bool bStartThreads, HANDLE hWlx) noexcept;
    void SetWinlogonTimeout(HANDLE hWlx) noexcept;

    bool LoadInto(CGinaObjectList& list, const WCHAR* szPlugin);
    bool UnloadFrom(CGinaObjectList& list, const WCHAR* szPlugin, bool& bTold);
    std::array<CThreadObject*, 2> GetThreads() const noexcept;
    void StartThreads();

    GinaNode* FindFirst(CGinaObject*& pFirst);
    template <typename Result, typename Slot, typename... Args>
    Result CallFirst(Slot pfnOperation, Args... args);
    template <typename Result, typename Slot, typename... Args>
    Result Dispatch(CTracePoint point, Slot pfnOperation, Args... args);
};
