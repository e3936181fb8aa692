#pragma once

#include <string>
#include <vector>

#include "online/OnlineHost.h"
#include "machine/Text.h"

class CJsonWriter;

/// A configured plugin.
struct CPluginView
{
    WideText name;
    /// Whether the host in service has it.
    bool bLoaded = false;
    /// Whether the next start leaves it out by the host's settings and notes.
    bool bLeftOut = false;
    /// Why the next start goes without it; empty when it does not, as far as can be seen.
    std::string trouble;
};

/// What is known of a machine's plugins.
struct CPluginsView
{
    bool bConfigured = false; ///< whether the configuration can be seen from here at all
    bool bAnswers = false;    ///< whether there was a host to ask
    bool bNoPlugins = false;  ///< whether the next start loads none, by the setting of that name
    std::vector<CPluginView> plugins;
    /// The value of the configuration, when it is no list of plugins: "KEY, Plugins is ...".
    std::string unreadable;
    /// The plugin in which the start has ended, or hangs; not looked for while a host answers.
    WideText startEndedIn;
    /// A sentence, when DLLs were not looked for, or not where the machine's are; empty when they were.
    std::string dllDoubt;
};

/// Reads the configuration of the machine that the command line names, and asks this machine's host if there
/// is one and it is about that. Throws CCommandError.
CPluginsView LookAtPlugins(COnlineHost& host, const CArguments& arguments);

/// What the next start makes of one that is configured. Whether it is loaded is not asked. Throws
/// CCommandError.
CPluginView LookAtPlugin(const WideText& name, const CArguments& arguments);

/// Whether there is no host, or something configured is not in service. On another machine, where no host
/// runs: whether something configured would not be at its next start.
bool LacksSomething(const CPluginsView& view);

void PrintPlugins(const CPluginsView& view, std::string& output);
void PrintPluginsJson(const CPluginsView& view, std::string& output);
/// What the latter prints, as members of an object.
void AddPluginsJson(CJsonWriter& json, const CPluginsView& view);
