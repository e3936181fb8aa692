#pragma once

#include <string>
#include <vector>

#include "TestPlugin.h"

/// A test plugin loaded by name: stays loaded, with its settings, for the life of this object.
class CPluginDriver
{
public:
    explicit CPluginDriver(const WCHAR* szDLL);
    ~CPluginDriver();
    CPluginDriver(const CPluginDriver&) = delete;
    CPluginDriver& operator=(const CPluginDriver&) = delete;

    const TestPluginInterface* operator->() const { return m_pInterface; }

    const WCHAR* GetName() const { return m_szDLL; }
    /// The calls received so far, without "LUM".
    std::vector<std::string> Calls() const;
    /// The last call received; a test that has none has failed already.
    const PluginRecord& LastRecord() const;

private:
    const WCHAR* m_szDLL;
    HMODULE m_hModule;
    const TestPluginInterface* m_pInterface;
};
