#include "GinaContext.h"

#include "NullWarnings.h"
#include "RequireArgument.h"

namespace {

constexpr WCHAR CLASS_NAME[] = TEXT("CGinaContext");

} // namespace

CGinaContext::CGinaContext(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance)
    : CGlobalObject(szAPPArg, szMTMArg), m_hInstance(hInstance), m_hWlx(nullptr)
{
    const CConstructionTrace trace(*this, CLASS_NAME);
    RequireArgument(*this, hInstance, TEXT("hInstance"));
}

CGinaContext::~CGinaContext()
{
    const CDestructionTrace trace(*this, CLASS_NAME);
}

HINSTANCE CGinaContext::GetInstanceHandle() noexcept
{
    return PullValue(*this, CLASS_NAME, TEXT("GetInstanceHandle"), m_hInstance);
}

HANDLE CGinaContext::GetWlxHandle() noexcept
{
    return PullValue(*this, CLASS_NAME, TEXT("GetWlxHandle"), m_hWlx);
}

void CGinaContext::SetWlxHandle(HANDLE hWlx) noexcept
{
    PushValue(*this, CLASS_NAME, TEXT("SetWlxHandle"), m_hWlx, hWlx);
}
