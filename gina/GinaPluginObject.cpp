#include "GinaPluginObject.h"

#include "Exceptions.h"
#include "Operation.h"

CGinaPluginObject::CGinaPluginObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance,
                                     const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion,
                                     DWORD dwUsingWlxVersion)
    : CForwardingGinaObject(szAPPArg, szMTMArg, hInstance, szGinaDLLName, dwUsingLUMVersion,
                            dwUsingWlxVersion)
{
    const CConstructionTrace trace(*this, s_szClass);
    Hook();
}

CGinaPluginObject::~CGinaPluginObject()
{
    const CDestructionTrace trace(*this, s_szClass);
    FreeGinaDLL();
}

void CGinaPluginObject::HookFailed(CSourceLocation where) const
{
    throw CUnhandledPluginException(LUM_GINA_ORIGIN, GetGinaDLLName(), where);
}

void CGinaPluginObject::NegotiateVersions()
{
    CGinaPluginInfo& info = GetPluginInfo();
    const BYTE bAccepted = Call<BYTE>(CSourceLocation::Current(), m_Negotiate, &info);
    if (bAccepted == 0 || info.m_dwWlxVersion < WLX_VERSION_1_0 ||
        info.m_dwLUMVersion > LUM_INTERFACE_VERSION) {
        throw CFailedGinaNegotiationsException(LUM_GINA_ORIGIN, bAccepted);
    }
}

void CGinaPluginObject::DynamicUnload()
{
    CallDirectly<void>(TEXT("DynamicUnload"), m_DynamicUnload);
}

bool CGinaPluginObject::Initialize(CLUMObject* pLUMObject, DWORD dwInstanceCount, LPWSTR lpWinsta,
                                   HANDLE hWlx, PVOID pvReserved, PVOID pWinlogonFunctions,
                                   PVOID* pWlxContext, DWORD dwLoadFlag1, DWORD dwLoadFlag2)
{
    const CSlotPoint point = TEXT("Initialize");
    return RunOperation<CUnexpectedEndOfListException, CNullFunctionHandleException>(s_szClass, point, [&] {
        RequireResolved(m_Initialize, point.where);
        SetWlxHandle(hWlx);
        return Call<bool>(point.where, m_Initialize, pLUMObject, dwInstanceCount, lpWinsta, hWlx, pvReserved,
                          pWinlogonFunctions, pWlxContext, dwLoadFlag1, dwLoadFlag2);
    });
}

bool CGinaPluginObject::Negotiate(DWORD, DWORD*, CGinaPluginInfo* pPluginInfo)
{
    return CallDirectly<bool>(TEXT("Negotiate"), m_Negotiate, pPluginInfo);
}

bool CGinaPluginObject::QueryPlugin(CGinaPluginInfo* pPluginInfo, DWORD dwQueryParam1, DWORD dwQueryParam2,
                                    DWORD dwQueryParam3)
{
    return CallDirectly<bool, CUnexpectedEndOfListException>(TEXT("QueryPlugin"), m_QueryPlugin, pPluginInfo,
                                                             dwQueryParam1, dwQueryParam2, dwQueryParam3);
}

bool CGinaPluginObject::QueryPluginInfo(CGinaPluginInfo* pPluginInfo)
{
    return CallDirectly<bool, CUnexpectedEndOfListException>(TEXT("QueryPluginInfo"), m_QueryPluginInfo,
                                                             pPluginInfo);
}
