#pragma once

#include "GlobalObject.h"

/// The record that describes one GINA or plugin.
///
/// Plugins and clients that are built separately read it, so its 32 bytes keep this order. The record owns
/// its two strings. They are allocated with LocalAlloc and released with LocalFree. Whoever else fills a
/// record, such as a plugin in its LUMNegotiate, must allocate them in the same way. No operation throws.
class CGinaPluginInfo : public CGlobalObject
{
public:
    CGinaPluginInfo(const WCHAR* szAPPArg, const WCHAR* szMTMArg) noexcept;
    ~CGinaPluginInfo();
    CGinaPluginInfo(const CGinaPluginInfo&) = delete;

    /// Copies everything but the tag and key; the strings are duplicated. A string that the other record
    /// lacks becomes null. So does one that cannot be copied, which is reported.
    CGinaPluginInfo& operator=(const CGinaPluginInfo& other) noexcept;

    /// Replaces the DLL name by a copy of szGinaDLL. If that cannot be made: false, and the name is null.
    bool SetGinaDLL(const WCHAR* szGinaDLL) noexcept;

    DWORD m_dwSpare1;
    WCHAR* m_szFriendlyName;
    WCHAR* m_szGinaDLL;
    DWORD m_dwWlxVersion;
    DWORD m_dwLUMVersion;
    DWORD m_dwSpare2;

private:
    void Release(WCHAR*& szText, const WCHAR* szVariable) noexcept;
    void Replace(WCHAR*& szText, const WCHAR* szSource, const WCHAR* szVariable);
};
