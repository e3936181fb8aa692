#include "GinaPluginObject.h"
#include "LUMGina.h"
#include "Needed.h"

// Plugins that come and go while the system runs. No lock is held while one of them is loaded, initialised,
// told to go or unloaded. The gate is closed only while one is told to go.

namespace {

/// Destroys an object that did not make it into the list.
struct CDiscard
{
    void operator()(CGinaObject* pGinaObject) const noexcept
    {
        DeleteVariable(LUM_GINA_ORIGIN, TEXT("PGinaObject"), [=] { DestroyListItem(pGinaObject); });
    }
};

} // namespace

bool CLUMGina::LUMAddPluginDynamic(const WCHAR* szPlugin) noexcept
{
    const COperation op(LUM_GINA_ORIGIN, s_szClass, TEXT("LUMAddPluginDynamic"));
    return op.Run(
        Absorb<>(), [&] { return LoadInto(Needed(m_pGinaObjectList), szPlugin); }, FailureWarning::Never);
}

bool CLUMGina::LoadInto(CGinaObjectList& list, const WCHAR* szPlugin)
{
    CLUMRegistry& registry = Needed(m_pLUMRegistry);
    CGinaContext& context = Needed(m_pGinaContext);
    CWinlogonObject& winlogon = Needed(m_pWinlogonObject);
    CLUMObject& control = Needed(m_pLUMObject);
    COwned<CGinaObject, CDiscard> pGinaObject(
        new CGinaPluginObject(LUM_GINA_APP, LUM_GINA_MTM, context.GetInstanceHandle(), szPlugin,
                              LUM_INTERFACE_VERSION, m_dwNegotiatedWlxVersion));
    const DWORD dwInstanceCount = ReadSetting(&CLUMRegistry::GetInstanceCount, 1);
    if (!pGinaObject->Initialize(&control, dwInstanceCount, nullptr, context.GetWlxHandle(), nullptr,
                                 winlogon.GetWinlogonFunctions(), nullptr, 1, 1))
    {
        return false;
    }
    m_gate.Look([&] { list.End(); });
    // The cursor is set again: another thread may have moved it while the registry was written.
    const auto insert = [&] {
        list.m_pCursor = list.m_pTail;
        return list.Insert(pGinaObject, 0);
    };
    if (!registry.AddPlugin(szPlugin) || !m_gate.Add(insert)) {
        return false;
    }
    pGinaObject.Release();
    return true;
}

bool CLUMGina::LUMRemovePluginDynamic(const WCHAR* szPlugin) noexcept
{
    const COperation op(LUM_GINA_ORIGIN, s_szClass, TEXT("LUMRemovePluginDynamic"));
    const auto body = [&] {
        CLUMRegistry& registry = Needed(m_pLUMRegistry);
        bool bTold = false;
        const bool bUnloaded = UnloadFrom(Needed(m_pGinaObjectList), szPlugin, bTold);
        // A plugin that was told to go is not loaded at the next start, even if a call keeps it in the list
        // now.
        const bool bForgotten = bTold && registry.RemovePlugin(szPlugin);
        return bUnloaded && bForgotten;
    };
    return op.Run(Absorb<>(), body, FailureWarning::Never);
}

/// The plugin is told while no call is in it, and new ones wait. If it takes too long, the next call of
/// Winlogon's opens the gate and goes on; the removal then waits for that call. The object is destroyed
/// without the lock: its DLL runs once more when it is freed.
bool CLUMGina::UnloadFrom(CGinaObjectList& list, const WCHAR* szPlugin, bool& bTold)
{
    GinaNode* pNode = nullptr;
    const auto find = [&] {
        const bool bFound = list.MoveTo(szPlugin);
        pNode = list.m_pCursor;
        return bFound;
    };
    const auto tell = [&] {
        CallWithinHost([=] { pNode->m_pItem->DynamicUnload(); });
        bTold = true;
    };
    const auto remove = [&] {
        // Another removal may have taken it out while it was told.
        GinaNode* pStill = list.m_pHead;
        while (pStill != nullptr && pStill != pNode) {
            pStill = pStill->pNext;
        }
        list.m_pCursor = pStill;
        return pStill != nullptr && list.Remove(pNode);
    };
    if (!m_gate.Change(find, tell, remove)) {
        return false;
    }
    list.DestroyNode(pNode);
    return true;
}
