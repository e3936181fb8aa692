#pragma once

#include "GlobalObject.h"

/// The record that describes one GINA or plugin.
///
/// Plugins and clients built separately read it: 32 bytes in this order. The two strings belong to the
/// record. They are allocated with LocalAlloc and released with LocalFree, and whoever else fills a
/// record (a plugin, in its LUMNegotiate) must allocate them in the same way. No operation throws.
class CGinaPluginInfo : public CGlobalObject
{
public:
    CGinaPluginInfo(const WCHAR* szAPPArg, const WCHAR* szMTMArg) noexcept;
    ~CGinaPluginInfo();
    CGinaPluginInfo(const CGinaPluginInfo&) = delete;

    /// Copies everything but the tag and key; the strings are duplicated. A string that cannot be
    /// copied is reported and becomes null, as does one that the other record has not got.
    CGinaPluginInfo& operator=(const CGinaPluginInfo& other) noexcept;

    /// Replaces the DLL name by a copy of szGinaDLL. When it cannot be copied, false, and the name is null.
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
