#pragma once

#include "GinaPluginInfo.h"

/// What the host keeps for one GINA or plugin DLL, and a plugin may read through its node: 52 bytes in
/// this order. Its GINA object owns it; it owns the record, but not the DLL.
class CGinaPluginContext : public CGlobalObject
{
public:
    /// hInstance is the host's own module and must not be null: CBadArgException.
    CGinaPluginContext(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance);
    ~CGinaPluginContext();
    CGinaPluginContext(const CGinaPluginContext&) = delete;
    CGinaPluginContext& operator=(const CGinaPluginContext&) = delete;

    // The accessors never throw; a null value that is asked for or set is only warned of.
    HINSTANCE GetDLLInstanceHandle() noexcept;
    void SetDLLInstanceHandle(HINSTANCE hDLLInstance) noexcept;
    void SetWlxHandle(HANDLE hWlx) noexcept;
    void SetGinaPluginInfo(const CGinaPluginInfo& info) noexcept;

    HINSTANCE m_hDLLInstance;
    HINSTANCE m_hInstance;
    HANDLE m_hWlx;
    CGinaPluginInfo m_GinaPluginInfo;
};
