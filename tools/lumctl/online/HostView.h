#pragma once

#include <vector>

#include "OnlineHost.h"
#include "Text.h"

/// A DLL that the configuration names, and what the host says of it.
struct CConfiguredDll
{
    WideText name;
    bool bLoaded = false;
};

/// What is known of the host in service. No request tells the calling order, the name of a plugin that is not
/// configured, or whether the registry monitor runs. So the plugins are those of the configuration, in its
/// order: that in which they were loaded, unless one was moved since.
struct CHostView
{
    bool bMarkedEnabled = false; ///< by the host itself, in the volatile key
    bool bAnswers = false;
    DWORD dwVersion = 0;
    std::vector<CConfiguredDll> plugins;
    CConfiguredDll passthrough;
    bool bHasPassthroughRecord = false;
    DWORD dwPassthroughVersion = 0;
    bool bInChain = false;
};

/// Reads the configuration, and asks the host if there is one.
CHostView LookAtHost(COnlineHost& host);
/// The plugins alone.
std::vector<CConfiguredDll> LookAtPlugins(COnlineHost& host, bool bAsk);

void PrintPlugins(const std::vector<CConfiguredDll>& plugins, bool bAnswers, std::string& output);
void PrintPluginsJson(const std::vector<CConfiguredDll>& plugins, bool bAnswers, std::string& output);
void PrintHost(const CHostView& view, std::string& output);
void PrintHostJson(const CHostView& view, std::string& output);
