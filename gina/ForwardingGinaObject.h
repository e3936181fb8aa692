#pragma once

#include "Exceptions.h"
#include "GinaObject.h"
#include "Operation.h"

/// The 19 forwarded operations, which standard GINAs and plugins have in common. Each calls the DLL's export
/// of its name. Derived decides how, and when to refuse, with
///
///     Result Forward<Result>(CSlotPoint point, const CGinaExport<...>& function, GinaNode* pNode, args...)
///
/// and has besides:
///
///     m_Name               each export; m_Exports lists them
///     s_szClass            its name for the trace log
///     NegotiateVersions()  throws when the DLL and the host do not agree
///     HookFailed(location) throws the exception that an unexpected failure of its constructor becomes
template <typename Derived>
class CForwardingGinaObject : public CGinaObject
{
public:
    void* DeletingDestructor(DWORD dwFlags) override
    {
        Derived* pObject = Self();
        PutBack();
        pObject->~Derived();
        if ((dwFlags & 1) != 0) {
            ::operator delete(pObject);
        }
        return pObject;
    }

    bool ActivateUserShell(GinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName, PWSTR pszMprLogonScript,
                           PVOID pEnvironment) override
    {
        return Self()->template Forward<bool>(CSlotPoint(TEXT("ActivateUserShell")).Refusable(),
                                              Self()->m_ActivateUserShell, pNode, pWlxContext, pszDesktopName,
                                              pszMprLogonScript, pEnvironment);
    }

    void DisconnectNotify(GinaNode* pNode, PVOID pWlxContext) override
    {
        return Self()->template Forward<void>(TEXT("DisconnectNotify"), Self()->m_DisconnectNotify, pNode,
                                              pWlxContext);
    }

    void DisplayLockedNotice(GinaNode* pNode, PVOID pWlxContext) override
    {
        return Self()->template Forward<void>(TEXT("DisplayLockedNotice"), Self()->m_DisplayLockedNotice,
                                              pNode, pWlxContext);
    }

    void DisplaySASNotice(GinaNode* pNode, PVOID pWlxContext) override
    {
        return Self()->template Forward<void>(TEXT("DisplaySASNotice"), Self()->m_DisplaySASNotice, pNode,
                                              pWlxContext);
    }

    bool DisplayStatusMessage(GinaNode* pNode, PVOID pWlxContext, HDESK hDesktop, DWORD dwOptions,
                              PWSTR pTitle, PWSTR pMessage) override
    {
        return Self()->template Forward<bool>(TEXT("DisplayStatusMessage"), Self()->m_DisplayStatusMessage,
                                              pNode, pWlxContext, hDesktop, dwOptions, pTitle, pMessage);
    }

    bool GetConsoleSwitchCredentials(GinaNode* pNode, PVOID pWlxContext, PVOID pCredInfo) override
    {
        return Self()->template Forward<bool>(TEXT("GetConsoleSwitchCredentials"),
                                              Self()->m_GetConsoleSwitchCredentials, pNode, pWlxContext,
                                              pCredInfo);
    }

    bool GetStatusMessage(GinaNode* pNode, PVOID pWlxContext, DWORD* pdwOptions, PWSTR pMessage,
                          DWORD dwBufferSize) override
    {
        return Self()->template Forward<bool>(TEXT("GetStatusMessage"), Self()->m_GetStatusMessage, pNode,
                                              pWlxContext, pdwOptions, pMessage, dwBufferSize);
    }

    bool IsLockOk(GinaNode* pNode, PVOID pWlxContext) override
    {
        return Self()->template Forward<bool>(CSlotPoint(TEXT("IsLockOk")).Refusable(), Self()->m_IsLockOk,
                                              pNode, pWlxContext);
    }

    bool IsLogoffOk(GinaNode* pNode, PVOID pWlxContext) override
    {
        return Self()->template Forward<bool>(CSlotPoint(TEXT("IsLogoffOk")).Refusable(),
                                              Self()->m_IsLogoffOk, pNode, pWlxContext);
    }

    int LoggedOnSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PVOID pReserved) override
    {
        return Self()->template Forward<SasAction>(TEXT("LoggedOnSAS"), Self()->m_LoggedOnSAS, pNode,
                                                   pWlxContext, dwSasType, pReserved);
    }

    int LoggedOutSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PLUID pAuthenticationId,
                     PSID pLogonSid, PDWORD pdwOptions, PHANDLE phToken, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo,
                     PVOID* pProfile) override
    {
        return Self()->template Forward<SasAction>(TEXT("LoggedOutSAS"), Self()->m_LoggedOutSAS, pNode,
                                                   pWlxContext, dwSasType, pAuthenticationId, pLogonSid,
                                                   pdwOptions, phToken, pNprNotifyInfo, pProfile);
    }

    void Logoff(GinaNode* pNode, PVOID pWlxContext) override
    {
        return Self()->template Forward<void>(TEXT("Logoff"), Self()->m_Logoff, pNode, pWlxContext);
    }

    bool NetworkProviderLoad(GinaNode* pNode, PVOID pWlxContext, PWLX_MPR_NOTIFY_INFO pNprNotifyInfo) override
    {
        return Self()->template Forward<bool>(CSlotPoint(TEXT("NetworkProviderLoad")).Refusable(),
                                              Self()->m_NetworkProviderLoad, pNode, pWlxContext,
                                              pNprNotifyInfo);
    }

    void ReconnectNotify(GinaNode* pNode, PVOID pWlxContext) override
    {
        return Self()->template Forward<void>(TEXT("ReconnectNotify"), Self()->m_ReconnectNotify, pNode,
                                              pWlxContext);
    }

    bool RemoveStatusMessage(GinaNode* pNode, PVOID pWlxContext) override
    {
        return Self()->template Forward<bool>(TEXT("RemoveStatusMessage"), Self()->m_RemoveStatusMessage,
                                              pNode, pWlxContext);
    }

    bool ScreenSaverNotify(GinaNode* pNode, PVOID pWlxContext, BOOL* pSecure) override
    {
        return Self()->template Forward<bool>(TEXT("ScreenSaverNotify"), Self()->m_ScreenSaverNotify, pNode,
                                              pWlxContext, pSecure);
    }

    void Shutdown(GinaNode* pNode, PVOID pWlxContext, DWORD dwShutdownType) override
    {
        return Self()->template Forward<void>(TEXT("Shutdown"), Self()->m_Shutdown, pNode, pWlxContext,
                                              dwShutdownType);
    }

    bool StartApplication(GinaNode* pNode, PVOID pWlxContext, PWSTR pszDesktopName, PVOID pEnvironment,
                          PWSTR pszCmdLine) override
    {
        return Self()->template Forward<bool>(CSlotPoint(TEXT("StartApplication")).Refusable(),
                                              Self()->m_StartApplication, pNode, pWlxContext, pszDesktopName,
                                              pEnvironment, pszCmdLine);
    }

    int WkstaLockedSAS(GinaNode* pNode, PVOID pWlxContext, DWORD dwSasType) override
    {
        return Self()->template Forward<SasAction>(TEXT("WkstaLockedSAS"), Self()->m_WkstaLockedSAS, pNode,
                                                   pWlxContext, dwSasType);
    }

protected:
    using CGinaObject::CGinaObject;
    ~CForwardingGinaObject() = default;

    /// The rest of the constructor: loads the DLL, negotiates with it and looks up its exports. If that
    /// fails, frees the DLL.
    void Hook()
    {
        const COperation op(*this, Derived::s_szClass, TEXT("Hook"));
        const auto onException = [this](const COperation& failed) {
            if (ReportIfHookFailure()) {
                throw;
            }
            Self()->HookFailed(failed.GetLocation());
        };
        try {
            op.Run(onException, [this] {
                LoadGinaDLL();
                Resolve(Self()->m_Negotiate);
                Self()->NegotiateVersions();
                ResolveAll(Self()->m_Exports);
            });
        } catch (...) {
            if (IsLoaded()) {
                FreeGinaDLL();
            }
            throw;
        }
    }

    /// An operation that is not forwarded: calls the export, wherever the object stands in the list. The
    /// exceptions AlsoPassedOn leave it as they are, as does the one for a missing export.
    template <typename Result, typename... AlsoPassedOn, typename Function, typename... Args>
    Result CallDirectly(CSlotPoint point, const CGinaExport<Function>& function, Args... args)
    {
        return RunOperation<CNullFunctionHandleException, AlsoPassedOn...>(
            Derived::s_szClass, point, [&] { return Call<Result>(point.where, function, args...); });
    }

private:
    Derived* Self() noexcept { return static_cast<Derived*>(this); }
};
