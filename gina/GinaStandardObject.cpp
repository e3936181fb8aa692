#include "GinaStandardObject.h"

#include "Exceptions.h"
#include "Operation.h"

CGinaStandardObject::CGinaStandardObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance,
                                         const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion,
                                         DWORD dwUsingWlxVersion)
    : CForwardingGinaObject(szAPPArg, szMTMArg, hInstance, szGinaDLLName, dwUsingLUMVersion,
                            dwUsingWlxVersion)
{
    const CConstructionTrace trace(*this, s_szClass);
    Hook();
}

CGinaStandardObject::~CGinaStandardObject()
{
    const CDestructionTrace trace(*this, s_szClass);
    FreeGinaDLL();
}

void CGinaStandardObject::HookFailed(CSourceLocation where) const
{
    throw CUnhandledExceptionException(LUM_GINA_ORIGIN, where);
}

void CGinaStandardObject::NegotiateVersions()
{
    const DWORD dwOffered = GetPluginInfo().m_dwWlxVersion;
    DWORD dwAnswer = dwOffered;
    const BOOL bAccepted = Call<BOOL>(CSourceLocation::Current(), m_Negotiate, dwOffered, &dwAnswer);
    GetPluginInfo().m_dwWlxVersion = dwAnswer;
    if (bAccepted == FALSE) {
        throw CFailedGinaNegotiationsException(LUM_GINA_ORIGIN, 0);
    }
}

void CGinaStandardObject::DynamicUnload()
{
    // A standard GINA is not unloaded while the system runs, and has no export for it.
    RunOperation(s_szClass, TEXT("DynamicUnload"), [] {});
}

bool CGinaStandardObject::Initialize(CLUMObject*, DWORD, LPWSTR lpWinsta, HANDLE hWlx, PVOID pvReserved,
                                     PVOID pWinlogonFunctions, PVOID* pWlxContext, DWORD, DWORD)
{
    return CallDirectly<bool, CUnexpectedGinaException>(TEXT("Initialize"), m_Initialize, lpWinsta, hWlx,
                                                        pvReserved, pWinlogonFunctions, pWlxContext);
}

bool CGinaStandardObject::Negotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion, CGinaPluginInfo*)
{
    return CallDirectly<bool>(TEXT("Negotiate"), m_Negotiate, dwWinlogonVersion, pdwDllVersion);
}

bool CGinaStandardObject::QueryPlugin(CGinaPluginInfo*, DWORD, DWORD, DWORD)
{
    return RunOperation(s_szClass, TEXT("QueryPlugin"), [] { return false; });
}

bool CGinaStandardObject::QueryPluginInfo(CGinaPluginInfo* pPluginInfo)
{
    return CallBackIntoHost(CCaller(), [&] {
        const COperation op(*this, s_szClass, TEXT("QueryPluginInfo"));
        return op.Run(Absorb<>(), [&] {
            CallWithinHost([&] { *pPluginInfo = GetPluginInfo(); });
            return true;
        });
    });
}
