#include "Action.h"
#include "Lumctl.h"
#include "plugins/OfflinePlugins.h"

// The custom actions for packages of plugins.

namespace {

void FindPluginAndSay(const CInstallSession& session)
{
    session.SetProperty(L"CONFIGURED", IsConfigured(session.Property(L"PLUGIN")) ? L"1" : L"");
}

void RunFields(const CInstallSession& session)
{
    Lumctl::Run(session, session.Fields());
}

void RemoveIfConfigured(const CInstallSession& session)
{
    const WideText plugin = session.Fields()[0];
    if (IsConfigured(plugin)) {
        Lumctl::Run(session, {L"plugins", L"remove", plugin});
    } else {
        session.Log(Shown(plugin) + " is not configured");
    }
}

} // namespace

/// Sets the property CONFIGURED if the plugin that the property PLUGIN names is configured, and else clears
/// it.
CUSTOM_ACTION(FindPlugin, FindPluginAndSay)

/// Runs lumctl with the fields as its arguments.
CUSTOM_ACTION(RunLumctl, RunFields)

/// Takes the plugin that the field names out of the configuration, if it is there.
CUSTOM_ACTION(RemovePlugin, RemoveIfConfigured)
