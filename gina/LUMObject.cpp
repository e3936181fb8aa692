#include "LUMObject.h"

#include "GinaNames.h"
#include "LUMRegistry.h"
#include "Operation.h"
#include "RequireArgument.h"
#include "chaining/RegistryManager.h"

CLUMObject::CLUMObject(const WCHAR* szAPPArg, const WCHAR* szMTMArg, CRegistryManager* pRegistryManager,
                       CGinaObjectList* pGinaObjectList, CLUMRegistry* pLUMRegistry, CCallGate* pGate)
    : CGlobalObject(szAPPArg, szMTMArg), m_pRegistryManager(pRegistryManager),
      m_pGinaObjectList(pGinaObjectList), m_pLUMRegistry(pLUMRegistry),
      m_gate(pGate != nullptr ? *pGate : m_ownGate)
{
    const CConstructionTrace trace(*this, s_szClass);
    RequireArgument(*this, pRegistryManager, TEXT("pRegistryManager"));
    RequireArgument(*this, pLUMRegistry, TEXT("pLUMRegistry"));
    RequireArgument(*this, pGinaObjectList, TEXT("pGinaObjectList"));
}

CLUMObject::~CLUMObject()
{
    const CDestructionTrace trace(*this, s_szClass);
    m_pRegistryManager = nullptr;
    m_pGinaObjectList = nullptr;
    m_pLUMRegistry = nullptr;
}

template <typename Body>
bool CLUMObject::Run(CTracePoint point, Body body) noexcept
{
    const COperation op(*this, s_szClass, point);
    return op.Run(Absorb<>(), body, FailureWarning::UnlessRaised);
}

bool CLUMObject::LUMEnableGina(bool bEnable) noexcept
{
    return Run(TEXT("LUMEnableGina"), [&] {
        return bEnable ? m_pRegistryManager->InsertGinaIntoChainingList(HOST_GINA, nullptr, true)
                       : m_pRegistryManager->RemoveGinaFromChainingList(HOST_GINA);
    });
}

bool CLUMObject::LUMRemoveGina(const WCHAR* szGinaDLL) noexcept
{
    return Run(TEXT("LUMRemoveGina"),
               [&] { return m_pRegistryManager->RemoveGinaFromChainingList(szGinaDLL); });
}

bool CLUMObject::LUMIsGinaInChainingList(const WCHAR* szGinaDLL) noexcept
{
    return Run(TEXT("LUMIsGinaInChainingList"),
               [&] { return m_pRegistryManager->IsGinaInChainingList(szGinaDLL); });
}

bool CLUMObject::LUMAddPlugin(const WCHAR* szPlugin) noexcept
{
    return Run(TEXT("LUMAddPlugin"), [&] { return m_pLUMRegistry->AddPlugin(szPlugin); });
}

bool CLUMObject::LUMRemovePlugin(const WCHAR* szPlugin) noexcept
{
    return Run(TEXT("LUMRemovePlugin"), [&] { return m_pLUMRegistry->RemovePlugin(szPlugin); });
}

bool CLUMObject::LUMIsGinaInPluginList(const WCHAR* szPlugin) noexcept
{
    return Run(TEXT("LUMIsGinaInPluginList"),
               [&] { return m_gate.Look([&] { return m_pGinaObjectList->MoveTo(szPlugin); }); });
}

bool CLUMObject::LUMIncreasePriority(const CGinaPluginInfo& record) noexcept
{
    CGinaObjectList& list = *m_pGinaObjectList;
    const auto canMove = [&] {
        if (!list.MoveTo(record.m_szGinaDLL) || list.m_pCursor == list.m_pTail) {
            return false;
        }
        // At the head, MoveItemUp refuses without changing anything.
        return list.m_pCursor != list.m_pHead || list.MoveItemUp();
    };
    return Run(TEXT("LUMIncreasePriority"),
               [&] { return m_gate.Change(canMove, [&] { return list.MoveItemUp(); }); });
}

bool CLUMObject::LUMDecreasePriority(const CGinaPluginInfo& record) noexcept
{
    CGinaObjectList& list = *m_pGinaObjectList;
    return Run(TEXT("LUMDecreasePriority"), [&] {
        return m_gate.Change([&] { return IsAboveAnotherPlugin(record.m_szGinaDLL); },
                             [&] { return list.MoveTo(record.m_szGinaDLL) && list.MoveItemDown(); });
    });
}

/// Whether the name is that of a plugin other than the last. Moves the cursor. The last plugin is recognised
/// by its place as well as by its name: without memory, two equal names compare as different. A plugin that
/// got behind the passthrough GINA would make every call fail there.
bool CLUMObject::IsAboveAnotherPlugin(const WCHAR* szPlugin) noexcept
{
    CGinaObjectList& list = *m_pGinaObjectList;
    if (!list.MoveTo(szPlugin) || list.m_pCursor == list.m_pTail) {
        return false;
    }
    const GinaNode* pFound = list.m_pCursor;
    list.End();
    list.Prev();
    return list.m_pCursor != pFound && !(*pFound->m_pItem == *list.m_pCursor->m_pItem);
}

/// Calls an object of the list. find() moves the cursor to it, or returns false.
template <typename Find, typename Query>
bool CLUMObject::CallObject(Find find, Query query)
{
    return m_gate.Call([&] {
        CGinaObject* pObject = nullptr;
        const bool bFound = m_gate.Look([&] { return find() && m_pGinaObjectList->GetItem(pObject); });
        return bFound && query(*pObject);
    });
}

bool CLUMObject::LUMQueryPlugin(CGinaPluginInfo* pPluginInfo, const CGinaPluginInfo* pTarget,
                                DWORD dwQueryParam1, DWORD dwQueryParam2, DWORD dwQueryParam3) noexcept
{
    return Run(TEXT("LUMQueryPlugin"), [&] {
        return CallObject(
            [&] { return pTarget != nullptr && m_pGinaObjectList->MoveTo(pTarget->m_szGinaDLL); },
            [&](CGinaObject& object) {
                return object.QueryPlugin(pPluginInfo, dwQueryParam1, dwQueryParam2, dwQueryParam3);
            });
    });
}

bool CLUMObject::LUMQueryPluginInfo(const WCHAR* szGinaDLL, CGinaPluginInfo& record) noexcept
{
    return Run(TEXT("LUMQueryPluginInfo"), [&] {
        return CallObject([&] { return m_pGinaObjectList->MoveTo(szGinaDLL); },
                          [&](CGinaObject& object) { return object.QueryPluginInfo(&record); });
    });
}

bool CLUMObject::LUMGetPassthroughGina(CGinaPluginInfo& record) noexcept
{
    return Run(TEXT("LUMGetPassthroughGina"), [&] {
        const auto moveToLast = [this] {
            m_pGinaObjectList->End();
            return true;
        };
        return CallObject(moveToLast, [&](CGinaObject& object) {
            record = object.m_pGinaPluginContext->m_GinaPluginInfo;
            return true;
        });
    });
}
