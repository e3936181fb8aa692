#include "CountingPlugin.h"

#include "LUMPlugin.h"

namespace {

/// One call inside the plugin; a forwarded one has its trail.
class CCountedCall
{
public:
    explicit CCountedCall(CPluginCounts& counts) : m_counts(counts)
    {
        ++m_counts.nEntries;
        m_counts.nTooLate += m_counts.bUnloaded ? 1 : 0;
    }
    CCountedCall(CPluginCounts& counts, const lum::CGinaNode* pNode, PVOID pWlxContext) : CCountedCall(counts)
    {
        static_cast<ICallTrail*>(pWlxContext)->Visit(pNode);
    }
    ~CCountedCall() { ++m_counts.nExits; }
    CCountedCall(const CCountedCall&) = delete;
    CCountedCall& operator=(const CCountedCall&) = delete;

private:
    CPluginCounts& m_counts;
};

class CCountingPlugin final : public lum::CPlugin
{
public:
    BOOL Initialize(lum::CLUMObject*, DWORD, LPWSTR, HANDLE hWlx, PVOID, PVOID, PVOID*, DWORD, DWORD) override
    {
        m_pCounts = static_cast<IPluginJournal*>(hWlx)->BeginPlugin();
        return m_pCounts != nullptr;
    }

    void DynamicUnload() override
    {
        m_pCounts->nTooLate += m_pCounts->nEntries != m_pCounts->nExits ? 1 : 0;
        m_pCounts->bUnloaded = true;
    }

    bool QueryPlugin(lum::CGinaPluginInfo*, DWORD dwQueryParam1, DWORD, DWORD) override
    {
        const CCountedCall call(*m_pCounts);
        return dwQueryParam1 != 0;
    }

    bool QueryPluginInfo(lum::CGinaPluginInfo* pPluginInfo) override
    {
        const CCountedCall call(*m_pCounts);
        return CPlugin::QueryPluginInfo(pPluginInfo);
    }

    BOOL IsLockOk(lum::CGinaNode* pNode, PVOID pWlxContext) override
    {
        const CCountedCall call(*m_pCounts, pNode, pWlxContext);
        return CPlugin::IsLockOk(pNode, pWlxContext);
    }

    int LoggedOnSAS(lum::CGinaNode* pNode, PVOID pWlxContext, DWORD dwSasType, PVOID pReserved) override
    {
        const CCountedCall call(*m_pCounts, pNode, pWlxContext);
        return CPlugin::LoggedOnSAS(pNode, pWlxContext, dwSasType, pReserved);
    }

    void Shutdown(lum::CGinaNode* pNode, PVOID pWlxContext, DWORD dwShutdownType) override
    {
        const CCountedCall call(*m_pCounts, pNode, pWlxContext);
        CPlugin::Shutdown(pNode, pWlxContext, dwShutdownType);
    }

private:
    CPluginCounts* m_pCounts = nullptr;
};

CCountingPlugin s_plugin;

} // namespace

LUM_PLUGIN(s_plugin)
