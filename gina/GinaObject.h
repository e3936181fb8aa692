#pragma once

#include <atomic>
#include <new>

#include <windows.h>
#include "WlxInterface.h"

#include "EventLog.h"
#include "GinaExport.h"
#include "GinaPluginContext.h"
#include "KeptOrigin.h"
#include "ListEx.h"
#include "Owned.h"
#include "guard/FaultGuard.h"

class CGinaObject;
class CLUMObject;

using GinaNode = NodeType<CGinaObject>;
using CGinaObjectList = CListEx<CGinaObject>;

/// The plugin interface version that the host offers.
inline constexpr DWORD LUM_INTERFACE_VERSION = 0x01000000;

/// What runs when a DLL is loaded and freed.
inline constexpr char DLL_MAIN[] = "DllMain";

/// The name of an operation that a DLL may call, its place in the source, and who called it.
struct CSlotPoint : CTracePoint
{
    CSlotPoint(const WCHAR* szNameArg, CSourceLocation whereArg = CSourceLocation::Current(),
               CCaller callerArg = CCaller()) noexcept
        : CTracePoint(szNameArg, whereArg), caller(callerArg)
    {
    }

    /// The same for an operation whose answer FALSE refuses something to the user.
    CSlotPoint Refusable() const noexcept
    {
        CSlotPoint point(*this);
        point.bRefusable = true;
        return point;
    }

    CCaller caller;
    bool bRefusable = false;
};

/// One entry of the GINA object list: a GINA or plugin DLL that the host has loaded.
///
/// Plugins of other compilers call the operations through their slots in the virtual table, in the order in
/// which they are declared here, and read the fields. So never add, remove or move an operation, and add no
/// field before m_pGinaPluginContext. The first operation stands in for a virtual destructor, which compilers
/// lay out differently.
///
/// A forwarded operation takes the list's node that holds the object, then the arguments of the Wlx function
/// of its name. An object has no lock; its operations run on the caller's thread. An operation may throw an
/// exception of Exceptions.h. If a DLL has called it, the exception travels through the DLL's frames (see
/// FaultGuard.h).
class CGinaObject : public CGlobalObject
{
public:
    /// Destroys the object and, when bit 0 of dwFlags is set, frees its memory. Returns the object's address.
    virtual void* DeletingDestructor(DWORD dwFlags) = 0;

    /// Makes delete go through that slot as well.
    static void operator delete(CGinaObject* pGinaObject, std::destroying_delete_t)
    {
        pGinaObject->DeletingDestructor(1);
    }
    // For an object whose constructor throws.
    static void operator delete(void* pMemory) noexcept { ::operator delete(pMemory); }
    static void* operator new(std::size_t cbObject) { return ::operator new(cbObject); }

    virtual bool ActivateUserShell(GinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName,
                                   PWSTR pszMprLogonScript, PVOID pEnvironment) = 0;
    virtual void DisconnectNotify(GinaNode* pNode, PVOID pWlxContext) = 0;
    virtual void DisplayLockedNotice(GinaNode* pNode, PVOID pWlxContext) = 0;
    virtual void DisplaySASNotice(GinaNode* pNode, PVOID pWlxContext) = 0;
    virtual bool DisplayStatusMessage(GinaNode* pNode, PVOID pWlxContext, HDESK hDesktop, DWORD dwOptions,
                                      PWSTR pTitle, PWSTR pMessage) = 0;
    /// The object is about to be removed while the system runs.
    virtual void DynamicUnload() = 0;
    virtual bool GetConsoleSwitchCredentials(GinaNode* pNode, PVOID pWlxContext, PVOID pCredInfo) = 0;
    virtual bool GetStatusMessage(GinaNode* pNode, PVOID pWlxContext, DWORD* pdwOptions, PWSTR pMessage,
                                  DWORD dwBufferSize) = 0;
    /// Not forwarded. pLUMObject: the host's control operations. dwInstanceCount: initialisations since the
    /// machine started. Then come the arguments of WlxInitialize. The load flags are 0 when Winlogon
    /// initialises the host, and 1 when a plugin is added to the running system.
    virtual bool Initialize(CLUMObject* pLUMObject, DWORD dwInstanceCount, LPWSTR lpWinsta, HANDLE hWlx,
                            PVOID pvReserved, PVOID pWinlogonFunctions, PVOID* pWlxContext, DWORD dwLoadFlag1,
                            DWORD dwLoadFlag2) = 0;
    virtual bool IsLockOk(GinaNode* pNode, PVOID pWlxContext) = 0;
    virtual bool IsLogoffOk(GinaNode* pNode, PVOID pWlxContext) = 0;
    virtual int LoggedOnSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PVOID pReserved) = 0;
    virtual int LoggedOutSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PLUID pAuthenticationId,
                             PSID pLogonSid, PDWORD pdwOptions, PHANDLE phToken,
                             PWLX_MPR_NOTIFY_INFO pNprNotifyInfo, PVOID* pProfile) = 0;
    virtual void Logoff(GinaNode* pNode, PVOID pWlxContext) = 0;
    /// Not forwarded, and not called by the host: an object negotiates when it is constructed.
    virtual bool Negotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion, CGinaPluginInfo* pPluginInfo) = 0;
    virtual bool NetworkProviderLoad(GinaNode* pNode, PVOID pWlxContext,
                                     PWLX_MPR_NOTIFY_INFO pNprNotifyInfo) = 0;
    /// A query that a client of the control channel sends to the plugin. The two agree on what it means. Not
    /// forwarded.
    virtual bool QueryPlugin(CGinaPluginInfo* pPluginInfo, DWORD dwQueryParam1, DWORD dwQueryParam2,
                             DWORD dwQueryParam3) = 0;
    /// Fills the caller's record. Not forwarded.
    virtual bool QueryPluginInfo(CGinaPluginInfo* pPluginInfo) = 0;
    virtual void ReconnectNotify(GinaNode* pNode, PVOID pWlxContext) = 0;
    virtual bool RemoveStatusMessage(GinaNode* pNode, PVOID pWlxContext) = 0;
    virtual bool ScreenSaverNotify(GinaNode* pNode, PVOID pWlxContext, BOOL* pSecure) = 0;
    virtual void Shutdown(GinaNode* pNode, PVOID pWlxContext, DWORD dwShutdownType) = 0;
    virtual bool StartApplication(GinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName,
                                  PVOID pEnvironment, PWSTR pszCmdLine) = 0;
    virtual int WkstaLockedSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType) = 0;

    /// Whether both have the same DLL name in their records, ignoring case.
    bool operator==(const CGinaObject& other) const noexcept;
    bool operator==(const WCHAR* szGinaDLL) const noexcept;

    /// The DLL's name as it was given to the constructor.
    const WCHAR* GetGinaDLLName() const noexcept;

    /// The tag and key that the object was made with, even if a plugin has overwritten the fields.
    operator CMessageOrigin() const noexcept { return m_origin; }

    /// Public for delete alone. Destroy an object through its first slot.
    ~CGinaObject();
    CGinaObject(const CGinaObject&) = delete;
    CGinaObject& operator=(const CGinaObject&) = delete;

    COwned<CGinaPluginContext> m_pGinaPluginContext;

protected:
    /// hInstance: the host's module. szGinaDLLName: the DLL's name. dwUsingLUMVersion, dwUsingWlxVersion: the
    /// versions of the plugin interface and of Winlogon's interface that are offered. Throws CBadArgException
    /// for a missing one, CUnhandledExceptionException for any other failure.
    CGinaObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance, const WCHAR* szGinaDLLName,
                DWORD dwUsingLUMVersion, DWORD dwUsingWlxVersion);
    CGinaPluginInfo& GetPluginInfo() const noexcept { return m_pContext->m_GinaPluginInfo; }

    /// Keeps Winlogon's handle in the context, for the plugin to find.
    void SetWlxHandle(HANDLE hWlx) noexcept
    {
        PutBack();
        m_pContext->SetWlxHandle(hWlx);
    }

    /// Restores what the host relies on and a plugin can overwrite: tags and keys, the context and its module
    /// handle.
    void PutBack() noexcept;

    /// Loads the DLL and keeps its module handle in the context. Throws CUnableToLoadDLLException, also when
    /// the DLL is the host itself.
    void LoadGinaDLL();

    bool IsLoaded() const noexcept { return m_hModule != nullptr; }

    /// Frees the DLL if it was loaded. Failures are only reported.
    void FreeGinaDLL() noexcept;

    /// Looks up one export. Throws CUnableToLoadDLLFunctionException when it is missing; if that is
    /// tolerated, only reports it.
    void Resolve(CGinaExportBase& ginaExport) const;

    /// Looks up the exports that the negotiated Winlogon version calls for, except those that have been
    /// looked up.
    void ResolveAll(const CExportTable& table) const;

    /// Throws CNullFunctionHandleException, with the place where, if the export was not found.
    void RequireResolved(const CGinaExportBase& function, CSourceLocation where) const;

    /// Whether the node is the last of the list. A plugin has handed it on and can overwrite it: throws
    /// CForeignFault if it cannot be read.
    static bool IsLast(GinaNode* pNode)
    {
        return CallWithinHost([=] { return pNode->GetNext() == nullptr; });
    }

    /// Calls a function of the DLL inside a guard, for the operation at the place where. As a bool, any
    /// result but 0 is true. Throws CNullFunctionHandleException if the function was not found.
    template <typename Result, typename Function, typename... Args>
    Result Call(CSourceLocation where, const CGinaExport<Function>& function, Args... args)
    {
        RequireResolved(function, where);
        const CKeptOrigin lent(LentRecord(args...));
        const auto call = [&] { return function(args...); };
        if constexpr (std::is_same_v<Result, bool>) {
            return RunDLL(function.m_szName, call) != 0;
        } else {
            return static_cast<Result>(RunDLL(function.m_szName, call));
        }
    }

    /// For a catch block: whether the exception says why a DLL could not be used. If so, reports it.
    static bool ReportIfHookFailure() noexcept;

    /// Runs one operation. Exceptions of the classes PassedOn are reported and leave it as they are. Anything
    /// else leaves it as a CUnhandledPluginException that names this DLL.
    template <typename... PassedOn, typename Body>
    auto RunOperation(const WCHAR* szClass, CSlotPoint point, Body body)
    {
        return CallBackIntoHost(point.caller, [&]() -> std::invoke_result_t<Body> {
            const COperation op(*this, szClass, point);
            const auto onException = [this](const COperation& failed) {
                if (ReportIf<PassedOn...>()) {
                    throw;
                }
                throw CUnhandledPluginException(LUM_GINA_ORIGIN, GetGinaDLLName(), failed.GetLocation());
            };
            return op.Run(onException, body);
        });
    }

    /// Runs a forwarded operation as RunOperation does. bLast: nobody stands behind the object.
    template <typename... PassedOn, typename Body>
    auto RunForwarded(const WCHAR* szClass, CSlotPoint point, bool bLast, Body body)
    {
        return RunOperation<PassedOn...>(szClass, point, [&]() -> std::invoke_result_t<Body> {
            if constexpr (std::is_same_v<std::invoke_result_t<Body>, bool>) {
                return point.bRefusable ? Ask(point.szName, bLast, body) : body();
            } else {
                return body();
            }
        });
    }

private:
    static constexpr const WCHAR* s_szClass = TEXT("CGinaObject");

    /// How often somebody has refused something, or failed when asked.
    static inline std::atomic<DWORD> s_dwRefusals = 0;

    /// Tells the event log when this object refuses something that nobody behind it has refused. Calls nest,
    /// so that whoever refuses leaves the count one higher than he found it. If somebody is refused something
    /// on another thread meanwhile, the event may be missing.
    template <typename Body>
    bool Ask(const WCHAR* szOperation, bool bLast, Body body)
    {
        const DWORD dwBefore = ++s_dwRefusals;
        const bool bGranted = body();
        if (bGranted) {
            --s_dwRefusals;
        } else if (!bLast && s_dwRefusals == dwBefore) {
            ReportHostEvent(HostEvent::Refused, {GetGinaDLLName(), szOperation});
        }
        return bGranted;
    }

    /// Runs code of the DLL inside a guard. Restores the object's fields before and after: this DLL, or
    /// another one earlier, may have overwritten them. Tells the event log of a fault; szWhere: where the DLL
    /// is entered.
    template <typename Body>
    auto RunDLL(const char* szWhere, Body body)
    {
        PutBack();
        const struct CPutBack
        {
            ~CPutBack() { object.PutBack(); }
            CGinaObject& object;
        } putBack{*this};
        try {
            return CallIntoDLL(body);
        } catch (const CForeignFault& fault) {
            ReportFault(szWhere, fault);
            throw;
        }
    }
    void ReportFault(const char* szWhere, const CForeignFault& fault) const noexcept;

    /// The record that an export is handed: its first argument if that is one, otherwise null.
    template <typename... Args>
    static CGlobalObject* LentRecord(CGinaPluginInfo* pPluginInfo, Args...) noexcept
    {
        return pPluginInfo;
    }
    template <typename... Args>
    static CGlobalObject* LentRecord(Args...) noexcept
    {
        return nullptr;
    }

    template <typename GetName>
    bool IsNamed(CTracePoint point, GetName getName) const noexcept;
    COwnedText CopyRecordedName() const;

    void CreateContext(HINSTANCE hInstance);
    void StoreOffer(const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion, DWORD dwUsingWlxVersion);

    // What the host relies on. No plugin knows of these fields: they lie behind those that plugins read.
    const CMessageOrigin m_origin;
    CGinaPluginContext* m_pContext = nullptr;
    HMODULE m_hModule = nullptr;
    COwnedText m_szGinaDLLName;
};

/// Destroys an object of the list through its first slot. Throws CForeignFault when that faults.
inline void DestroyListItem(CGinaObject* pGinaObject)
{
    CallWithinHost([=] { pGinaObject->DeletingDestructor(1); });
}
