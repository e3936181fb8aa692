// Compiles only: the header is all that a plugin needs, in the oldest dialect that the system's own headers
// can be read in, and without exceptions and run-time type information.

#include "LUMPlugin.h"

namespace {

class CSmallPlugin : public lum::CPlugin
{
public:
    BOOL IsLockOk(lum::CGinaNode* pNode, PVOID pWlxContext)
    {
        if (m_bOpen) {
            lum::WriteTrace(TEXT("SMALL"), lum::TRACE_WARNING, TEXT("stays open"));
            return FALSE;
        }
        return CPlugin::IsLockOk(pNode, pWlxContext);
    }

private:
    bool m_bOpen;
};

CSmallPlugin s_plugin;

} // namespace

LUM_PLUGIN(s_plugin)
