#pragma once

#include "GinaPluginInfo.h"

/// What the host keeps about one loaded DLL. A plugin may read it through its node, so its 52 bytes keep this
/// order. The GINA object owns it; it owns the record, but not the DLL.
class CGinaPluginContext : public CGlobalObject
{
public:
    /// hInstance: the host's own module. Throws CBadArgException if it is null.
    CGinaPluginContext(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance);
    ~CGinaPluginContext();
    CGinaPluginContext(const CGinaPluginContext&) = delete;
    CGinaPluginContext& operator=(const CGinaPluginContext&) = delete;

    // The accessors never throw. Of a null value they only warn.
    HINSTANCE GetDLLInstanceHandle() noexcept;
    void SetDLLInstanceHandle(HINSTANCE hDLLInstance) noexcept;
    void SetWlxHandle(HANDLE hWlx) noexcept;
    void SetGinaPluginInfo(const CGinaPluginInfo& info) noexcept;

    HINSTANCE m_hDLLInstance;
    HINSTANCE m_hInstance;
    HANDLE m_hWlx;
    CGinaPluginInfo m_GinaPluginInfo;
};
