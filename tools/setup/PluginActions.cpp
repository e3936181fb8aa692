#include "Action.h"
#include "Lumctl.h"
#include "plugins/OfflinePlugins.h"

// The custom actions for packages of plugins.

/// Sets the property CONFIGURED if the plugin that the property PLUGIN names is configured, and else clears
/// it.
CUSTOM_ACTION(FindPlugin)
{
    session.SetProperty(L"CONFIGURED", IsConfigured(session.Property(L"PLUGIN")) ? L"1" : L"");
}

/// Carries out the command of lumctl that the fields make.
CUSTOM_ACTION(RunLumctl)
{
    Lumctl::Run(session, session.Fields());
}

/// Takes the plugin that the field names out of the configuration, if it is there.
CUSTOM_ACTION(RemovePlugin)
{
    const WideText plugin = session.Fields()[0];
    if (IsConfigured(plugin)) {
        Lumctl::Run(session, {L"plugins", L"remove", plugin});
    } else {
        session.Log(Shown(plugin) + " is not configured");
    }
}
