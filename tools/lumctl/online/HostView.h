#pragma once

#include <optional>
#include <vector>

#include "OnlineHost.h"
#include "plugins/PluginsView.h"

/// What is known of the host in service. No request tells the calling order, the names of plugins that are
/// not configured, or whether the registry monitor runs. So the plugins listed are those of the
/// configuration, in its order. They were loaded in this order, and some may have been moved since.
struct CHostView : CPluginsView
{
    bool bMarkedEnabled = false; ///< by the host itself, in the volatile key
    DWORD dwVersion = 0;
    std::vector<WideText> chain; ///< of GINAs, from Winlogon on, as the registry has it
    DWORD dwMonitorSeconds = 0;
    WideText passthrough;           ///< the configured one
    std::string passthroughTrouble; ///< what is configured when it is no text
    bool bPassthroughLoaded = false;
    bool bHasPassthroughRecord = false;
    DWORD dwPassthroughVersion = 0;
    bool bInChain = false;
};

/// Reads the configuration, and asks the host if there is one.
CHostView LookAtHost(COnlineHost& host, const CArguments& arguments);

/// Whether something configured is not in service.
bool LacksSomething(const CHostView& view);

void PrintHost(const CHostView& view, std::string& output);
void PrintHostJson(const CHostView& view, std::string& output);

/// "0x00010004".
std::string DescribeVersion(DWORD dwVersion);
