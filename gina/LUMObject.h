#pragma once

#include "CallGate.h"
#include "GinaObject.h"

class CLUMRegistry;
class CRegistryManager;

/// The control operations: what the control channel can ask of the running system, and change in it.
///
/// Any thread may call them, also from within a call of Winlogon's. An operation that fails reports why and
/// returns false; none throws. Names are compared ignoring case. A change of the order waits a limited time
/// for the calls in flight and fails if they do not end, at once from within such a call. A query is itself a
/// call in flight and may last as long as any.
///
/// Plugins are handed the object's address but can do nothing with it: it has no virtual table.
class CLUMObject : public CGlobalObject
{
public:
    /// The arguments are not owned and must outlive the object. Throws CBadArgException for a null one;
    /// checks the manager first, then the configuration, then the list. pGate: the gate of pGinaObjectList.
    /// If it is null, nobody else may use the list at the same time.
    CLUMObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, CRegistryManager* pRegistryManager,
               CGinaObjectList* pGinaObjectList, CLUMRegistry* pLUMRegistry, CCallGate* pGate = nullptr);
    ~CLUMObject();
    CLUMObject(const CLUMObject&) = delete;
    CLUMObject& operator=(const CLUMObject&) = delete;

    // The chain of GINAs in the registry.

    /// Puts this library at the front of the chain, or takes it out. False when it is already there, or
    /// already out.
    bool LUMEnableGina(bool bEnable) noexcept;
    bool LUMRemoveGina(const WCHAR* szGinaDLL) noexcept;
    bool LUMIsGinaInChainingList(const WCHAR* szGinaDLL) noexcept;

    // The plugins in the configuration. What is loaded does not change.

    /// True also for one that is configured already.
    bool LUMAddPlugin(const WCHAR* szPlugin) noexcept;
    /// True also for one that is not configured.
    bool LUMRemovePlugin(const WCHAR* szPlugin) noexcept;

    // What is loaded: plugins, and the passthrough GINA, which is the last.

    bool LUMIsGinaInPluginList(const WCHAR* szPlugin) noexcept;

    /// Moves the plugin that record names by m_szGinaDLL one place towards the front, or towards the end.
    /// False for the first, or the last, plugin, and for the passthrough GINA. The configuration is not
    /// changed.
    bool LUMIncreasePriority(const CGinaPluginInfo& record) noexcept;
    bool LUMDecreasePriority(const CGinaPluginInfo& record) noexcept;

    /// Hands the caller's pPluginInfo and the three values to the plugin that pTarget names, and returns its
    /// answer.
    bool LUMQueryPlugin(CGinaPluginInfo* pPluginInfo, const CGinaPluginInfo* pTarget, DWORD dwQueryParam1,
                        DWORD dwQueryParam2, DWORD dwQueryParam3) noexcept;

    /// Lets the plugin or GINA of that name fill the record, and returns its answer.
    bool LUMQueryPluginInfo(const WCHAR* szGinaDLL, CGinaPluginInfo& record) noexcept;

    /// Copies the record of the passthrough GINA.
    bool LUMGetPassthroughGina(CGinaPluginInfo& record) noexcept;

    CRegistryManager* m_pRegistryManager;
    CGinaObjectList* m_pGinaObjectList;
    CLUMRegistry* m_pLUMRegistry;

private:
    static constexpr const WCHAR* s_szClass = TEXT("CLUMObject");

    template <typename Body>
    bool Run(CTracePoint point, Body body) noexcept;
    template <typename Find, typename Query>
    bool CallObject(Find find, Query query);
    bool IsAboveAnotherPlugin(const WCHAR* szPlugin) noexcept;

    CCallGate m_ownGate;
    CCallGate& m_gate;
};
