#pragma once

#include "ForwardingGinaObject.h"
#include "Exceptions.h"
#include "GinaStandardExports.h"

/// A standard GINA: a DLL with the Wlx exports, and the end of the list.
///
/// A forwarded operation refuses the call if another object follows in the list. Four exports may be missing:
/// their operations then do nothing. The others must be there as far as the negotiated version has them.
class CGinaStandardObject final : public CForwardingGinaObject<CGinaStandardObject>,
                                  private CGinaStandardExports
{
public:
    /// Loads the DLL, negotiates with it and looks up its exports; arguments as for CGinaObject. Throws what
    /// CGinaObject's constructor throws, CUnableToLoadDLLException, CUnableToLoadDLLFunctionException,
    /// CFailedGinaNegotiationsException, or CUnhandledExceptionException for anything else, such as a fault
    /// in the DLL. The DLL is freed before any of these.
    CGinaStandardObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance,
                        const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion, DWORD dwUsingWlxVersion);
    ~CGinaStandardObject();

    void DynamicUnload() override;
    bool Initialize(CLUMObject* pLUMObject, DWORD dwInstanceCount, LPWSTR lpWinsta, HANDLE hWlx,
                    PVOID pvReserved, PVOID pWinlogonFunctions, PVOID* pWlxContext, DWORD dwLoadFlag1,
                    DWORD dwLoadFlag2) override;
    bool Negotiate(DWORD dwWinlogonVersion, DWORD* pdwDllVersion, CGinaPluginInfo* pPluginInfo) override;
    bool QueryPlugin(CGinaPluginInfo* pPluginInfo, DWORD dwQueryParam1, DWORD dwQueryParam2,
                     DWORD dwQueryParam3) override;
    bool QueryPluginInfo(CGinaPluginInfo* pPluginInfo) override;

private:
    friend class CForwardingGinaObject;

    static constexpr const WCHAR* s_szClass = TEXT("CGinaStandardObject");

    void NegotiateVersions();
    [[noreturn]] void HookFailed(CSourceLocation where) const;

    template <typename Result, typename Function, typename... Args>
    Result Forward(CSlotPoint point, const CGinaExport<Function>& function, GinaNode* pNode, Args... args);
};

/// A forwarded operation. Throws without calling the GINA if another object follows it. An optional export
/// that the GINA lacks is reported and skipped.
template <typename Result, typename Function, typename... Args>
Result CGinaStandardObject::Forward(CSlotPoint point, const CGinaExport<Function>& function, GinaNode* pNode,
                                    Args... args)
{
    const auto call = [&]() -> Result {
        if (!IsLast(pNode)) {
            throw CUnexpectedGinaException(LUM_GINA_ORIGIN, GetGinaDLLName(), point.where);
        }
        if (!function.IsResolved() && function.m_missing == Missing::Tolerated) {
            CNullFunctionHandleException(LUM_GINA_ORIGIN, GetGinaDLLName(), point.where);
            return Result();
        }
        return Call<Result>(point.where, function, args...);
    };
    return RunForwarded<CUnexpectedGinaException, CNullFunctionHandleException>(s_szClass, point, true, call);
}
