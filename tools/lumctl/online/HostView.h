#pragma once

#include <optional>
#include <vector>

#include "OnlineHost.h"
#include "machine/Text.h"

/// A DLL that the configuration names, and what the host says of it.
struct CConfiguredDll
{
    WideText name;
    bool bLoaded = false;
};

/// What the registry says of plugins.
struct CPluginsView
{
    bool bConfigured = false; ///< whether the configuration can be seen from here at all
    bool bAnswers = false;    ///< whether there was a host to ask
    std::vector<CConfiguredDll> plugins;
};

/// What is known of the host in service. No request tells the calling order, the names of plugins that are
/// not configured, or whether the registry monitor runs. So the plugins listed are those of the
/// configuration, in its order. They were loaded in this order, and some may have been moved since.
struct CHostView : CPluginsView
{
    bool bMarkedEnabled = false; ///< by the host itself, in the volatile key
    DWORD dwVersion = 0;
    std::vector<WideText> chain; ///< of GINAs, from Winlogon on, as the registry has it
    DWORD dwMonitorSeconds = 0;
    CConfiguredDll passthrough;
    bool bHasPassthroughRecord = false;
    DWORD dwPassthroughVersion = 0;
    bool bInChain = false;
};

/// How many characters the list of plugins in the registry has; nothing when the host cannot read the list.
std::optional<std::size_t> MeasurePluginList();

/// Reads the configuration, and asks the host if there is one.
CHostView LookAtHost(COnlineHost& host);
/// The plugins alone.
CPluginsView LookAtPlugins(COnlineHost& host);

void PrintPlugins(const CPluginsView& view, std::string& output);
void PrintPluginsJson(const CPluginsView& view, std::string& output);
void PrintHost(const CHostView& view, std::string& output);
void PrintHostJson(const CHostView& view, std::string& output);

/// "0x00010004".
std::string DescribeVersion(DWORD dwVersion);
