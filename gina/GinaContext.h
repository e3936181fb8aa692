#pragma once

#include "GlobalObject.h"

/// The handles that the host was given: its module at process attach, Winlogon's at initialisation.
///
/// Written on Winlogon's thread only. Getters and setter warn of a null value and go on.
class CGinaContext : public CGlobalObject
{
public:
    /// Throws CBadArgException for a null hInstance.
    CGinaContext(const WCHAR* szAPPArg, const WCHAR* szMTMArg, HINSTANCE hInstance);
    ~CGinaContext();
    CGinaContext(const CGinaContext&) = delete;
    CGinaContext& operator=(const CGinaContext&) = delete;

    HINSTANCE GetInstanceHandle() noexcept;
    HANDLE GetWlxHandle() noexcept;
    void SetWlxHandle(HANDLE hWlx) noexcept;

    HINSTANCE m_hInstance;
    HANDLE m_hWlx;
};
