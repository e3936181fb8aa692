#include "GinaPluginContext.h"

#include "NullWarnings.h"
#include "RequireArgument.h"

namespace {

constexpr WCHAR CLASS_NAME[] = TEXT("CGinaPluginContext");

} // namespace

CGinaPluginContext::CGinaPluginContext(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance)
    : CGlobalObject(szAPPArg, szMTMArg), m_hDLLInstance(nullptr), m_hInstance(hInstance), m_hWlx(nullptr),
      m_GinaPluginInfo(szAPPArg, szMTMArg)
{
    const CConstructionTrace trace(*this, CLASS_NAME);
    RequireArgument(*this, hInstance, TEXT("hInstance"));
}

CGinaPluginContext::~CGinaPluginContext()
{
    const CDestructionTrace trace(*this, CLASS_NAME);
}

HINSTANCE CGinaPluginContext::GetDLLInstanceHandle() noexcept
{
    return PullValue(*this, CLASS_NAME, TEXT("GetDLLInstanceHandle"), m_hDLLInstance);
}

void CGinaPluginContext::SetDLLInstanceHandle(HINSTANCE hDLLInstance) noexcept
{
    PushValue(*this, CLASS_NAME, TEXT("SetDLLInstanceHandle"), m_hDLLInstance, hDLLInstance);
}

void CGinaPluginContext::SetWlxHandle(HANDLE hWlx) noexcept
{
    PushValue(*this, CLASS_NAME, TEXT("SetWlxHandle"), m_hWlx, hWlx);
}

void CGinaPluginContext::SetGinaPluginInfo(const CGinaPluginInfo& info) noexcept
{
    const COperation op(*this, CLASS_NAME, TEXT("SetGinaPluginInfo"));
    op.Run(Absorb<>(), [&] { m_GinaPluginInfo = info; });
}
