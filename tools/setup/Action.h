#pragma once

#include "InstallSession.h"

/// Runs the body of a custom action. What it throws ends the action with a failure, and is shown.
UINT CarryOut(MSIHANDLE hInstall, void (*body)(const CInstallSession&));

/// Opens the body of a custom action, which lum_setup.def exports by its name. It has the session.
#define CUSTOM_ACTION(name)                                                                                  \
    static void name##Body(const CInstallSession& session);                                                  \
    extern "C" UINT __stdcall name(MSIHANDLE hInstall)                                                       \
    {                                                                                                        \
        return CarryOut(hInstall, name##Body);                                                               \
    }                                                                                                        \
    static void name##Body([[maybe_unused]] const CInstallSession& session)
