#pragma once

#include "HostMachine.h"

/// A host with three plugins and a GINA.
class PluginsInHost : public CHostMachine
{
protected:
    PluginsInHost()
    {
        for (const CPluginDriver& plugin : plugins) {
            plugin->SetCounter(&m_nCounter);
        }
        SetString(OWN_KEY, TEXT("GinaDLL"), TEXT("standin_gina.dll"));
        SetString(OWN_KEY, TEXT("Plugins"), TEXT("test_plugin_a.dll,test_plugin_b.dll,test_plugin_c.dll"));
    }
    ~PluginsInHost() override { host.reset(); }

    LONG m_nCounter = 0;
    CPluginDriver plugins[3] = {CPluginDriver(TEXT("test_plugin_a.dll")),
                                CPluginDriver(TEXT("test_plugin_b.dll")),
                                CPluginDriver(TEXT("test_plugin_c.dll"))};
};
