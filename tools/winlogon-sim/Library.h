#pragma once

#include <string>

#include <windows.h>

/// Owns a loaded DLL.
class CLibrary
{
public:
    CLibrary() = default;
    ~CLibrary() { Free(); }
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;

    /// Frees what was loaded before. Throws CSetupError when the DLL cannot be loaded.
    void Load(const std::string& name);
    void Free();
    bool IsLoaded() const { return m_hModule != nullptr; }

    /// Null when the DLL has no such export.
    FARPROC FindExport(const char* szName) const { return GetProcAddress(m_hModule, szName); }

private:
    HMODULE m_hModule = nullptr;
};
