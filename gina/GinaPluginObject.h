#pragma once

#include "ForwardingGinaObject.h"
#include "Exceptions.h"
#include "GinaPluginExports.h"

/// A plugin: a DLL with the LUM exports, in front of the standard GINA.
///
/// A forwarded operation hands the plugin its own node. It refuses the call if no other object follows in the
/// list: the plugin could not pass the call on. The DLL must have every export that its negotiated version
/// calls for.
class CGinaPluginObject final : public CForwardingGinaObject<CGinaPluginObject>, private CGinaPluginExports
{
public:
    /// Loads the DLL, negotiates with it and looks up its exports; arguments as for CGinaObject. Throws what
    /// CGinaObject's constructor throws, CUnableToLoadDLLException, CUnableToLoadDLLFunctionException,
    /// CFailedGinaNegotiationsException, or CUnhandledPluginException for anything else, such as a fault in
    /// the plugin. The DLL is freed before any of these.
    CGinaPluginObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance,
                      const WCHAR* szGinaDLLName, DWORD dwUsingLUMVersion, DWORD dwUsingWlxVersion);
    ~CGinaPluginObject();

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

    static constexpr const WCHAR* s_szClass = TEXT("CGinaPluginObject");

    void NegotiateVersions();
    [[noreturn]] void HookFailed(CSourceLocation where) const;

    template <typename Result, typename Function, typename... Args>
    Result Forward(CSlotPoint point, const CGinaExport<Function>& function, GinaNode* pNode, Args... args);
};

/// A forwarded operation. Throws without calling the plugin if no other object follows it.
template <typename Result, typename Function, typename... Args>
Result CGinaPluginObject::Forward(CSlotPoint point, const CGinaExport<Function>& function, GinaNode* pNode,
                                  Args... args)
{
    return RunForwarded<CUnexpectedEndOfListException, CNullFunctionHandleException>(
        s_szClass, point, false, [&]() -> Result {
            if (IsLast(pNode)) {
                throw CUnexpectedEndOfListException(LUM_GINA_ORIGIN, GetGinaDLLName(), point.where);
            }
            return Call<Result>(point.where, function, pNode, args...);
        });
}
