#pragma once

#include "CallGate.h"
#include "GinaObject.h"

class CLUMRegistry;
class CRegistryManager;

/// The control operations: what can be asked of, and done to, the running system from outside.
///
/// Operations may be called from any thread, also from within a call of Winlogon. They give false, and
/// report why, for whatever fails, and never throw. Names are compared without regard to letter case. A
/// change of the order waits a bounded time for the calls in flight and fails when they do not end: at
/// once from within such a call. Queries are calls like any other and may last as long.
///
/// Plugins are handed the object's address and can do nothing with it: no operation has a slot.
class CLUMObject : public CGlobalObject
{
public:
    /// The arguments are not owned, must outlive the object and must not be null: CBadArgException, for the
    /// manager first, then the configuration, then the list. pGate: the one over pGinaObjectList; without
    /// one, whoever else uses the list must not do so at the same time.
    CLUMObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, CRegistryManager* pRegistryManager,
               CGinaObjectList* pGinaObjectList, CLUMRegistry* pLUMRegistry, CCallGate* pGate = nullptr);
    ~CLUMObject();
    CLUMObject(const CLUMObject&) = delete;
    CLUMObject& operator=(const CLUMObject&) = delete;

    // The chain of GINAs in the registry.

    /// Puts this library at the front of the chain, or takes it out. False when it is there already, or is
    /// not.
    bool LUMEnableGina(bool bEnable) noexcept;
    bool LUMRemoveGina(const WCHAR* szGinaDLL) noexcept;
    bool LUMIsGinaInChainingList(const WCHAR* szGinaDLL) noexcept;

    // The plugins in the configuration; what is loaded stays as it is.

    /// True also for one that is configured already.
    bool LUMAddPlugin(const WCHAR* szPlugin) noexcept;
    /// True also for one that is not configured.
    bool LUMRemovePlugin(const WCHAR* szPlugin) noexcept;

    // What is loaded: plugins, and the passthrough GINA, which is the last.

    bool LUMIsGinaInPluginList(const WCHAR* szPlugin) noexcept;

    /// Moves the plugin that record names by m_szGinaDLL one place towards the front, or towards the end.
    /// False for the first, or the last, plugin and for the passthrough GINA. The configuration stays.
    bool LUMIncreasePriority(const CGinaPluginInfo& record) noexcept;
    bool LUMDecreasePriority(const CGinaPluginInfo& record) noexcept;

    /// Hands pPluginInfo, the caller's, and the three values to the plugin that pTarget names and gives its
    /// answer.
    bool LUMQueryPlugin(CGinaPluginInfo* pPluginInfo, const CGinaPluginInfo* pTarget, DWORD dwQueryParam1,
                        DWORD dwQueryParam2, DWORD dwQueryParam3) noexcept;

    /// Lets the plugin or GINA of that name fill the record, and gives its answer.
    bool LUMQueryPluginInfo(const WCHAR* szGinaDLL, CGinaPluginInfo& record) noexcept;

    /// Copies what is known of the passthrough GINA.
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
