#include "GinaStandardObject.h"

#include "Exceptions.h"
#include "Operation.h"

CGinaStandardObject::CGinaStandardObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance,
                                         const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion,
                                         DWORD dwUsingWlxVersion)
    : CChainedGinaObject(szAPPArg, szMTMArg, hInstance, szGinaDLLName, dwUsingLUMVersion, dwUsingWlxVersion)
{
    const CConstructionTrace trace(*this, s_szClass);
    HookOrFree([this] { Hook(); });
}

CGinaStandardObject::~CGinaStandardObject()
{
    const CDestructionTrace trace(*this, s_szClass);
    FreeGinaDLL();
}

void CGinaStandardObject::Hook()
{
    const COperation op(*this, s_szClass, TEXT("Hook"));
    const auto onException = [](const COperation& failed) {
        if (IsHandlingHookFailure()) {
            throw;
        }
        throw CUnhandledExceptionException(LUM_GINA_ORIGIN, failed.GetLocation());
    };
    op.Run(onException, [this] {
        LoadGinaDLL();
        Resolve(m_Negotiate);
        NegotiateVersion();
        ResolveAll(m_Exports);
    });
}

void CGinaStandardObject::NegotiateVersion()
{
    const DWORD dwOffered = GetPluginInfo().m_dwWlxVersion;
    DWORD dwAnswer = dwOffered;
    const BOOL bAccepted = Call<BOOL>(m_Negotiate, dwOffered, &dwAnswer);
    GetPluginInfo().m_dwWlxVersion = dwAnswer;
    if (bAccepted == FALSE) {
        throw CFailedGinaNegotiationsException(LUM_GINA_ORIGIN, 0);
    }
}

/// AlsoPassedOn: what leaves the operation as it is beside the exception for a missing export.
template <typename Result, typename... AlsoPassedOn, typename Function, typename... Args>
Result CGinaStandardObject::CallUnchained(CTracePoint point, const CGinaExport<Function>& function,
                                          Args... args)
{
    return RunOperation<CNullFunctionHandleException, AlsoPassedOn...>(
        s_szClass, point, [&] { return Call<Result>(function, args...); });
}

void CGinaStandardObject::DynamicUnload()
{
    // A standard GINA stays while the system runs, and has no export to be told otherwise.
    RunOperation(s_szClass, TEXT("DynamicUnload"), [] {});
}

bool CGinaStandardObject::Initialize(CLUMObject*, DWORD, LPWSTR lpWinsta, HANDLE hWlx, PVOID pvReserved,
                                     PVOID pWinlogonFunctions, PVOID* pWlxContext, DWORD, DWORD)
{
    return CallUnchained<bool, CUnexpectedGinaException>(TEXT("Initialize"), m_Initialize, lpWinsta, hWlx,
                                                         pvReserved, pWinlogonFunctions, pWlxContext);
}

bool CGinaStandardObject::Negotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion, CGinaPluginInfo*)
{
    return CallUnchained<bool>(TEXT("Negotiate"), m_Negotiate, dwWinlogonVersion, pdwDllVersion);
}

bool CGinaStandardObject::QueryPlugin(CGinaPluginInfo*, DWORD, DWORD, DWORD)
{
    return RunOperation(s_szClass, TEXT("QueryPlugin"), [] { return false; });
}

bool CGinaStandardObject::QueryPluginInfo(CGinaPluginInfo* pPluginInfo)
{
    return CalledFromDLL([&] {
        const COperation op(*this, s_szClass, TEXT("QueryPluginInfo"));
        return op.Run(Absorb<>(), [&] {
            *pPluginInfo = GetPluginInfo();
            return true;
        });
    });
}
