#pragma once

#include "InstallSession.h"

/// Runs the body of a custom action. What it throws ends the action with a failure, and is shown.
UINT CarryOut(MSIHANDLE hInstall, void (*action)(const CInstallSession&));

/// A custom action, which lum_setup.def exports by its name.
#define CUSTOM_ACTION(name, action)                                                                          \
    extern "C" UINT __stdcall name(MSIHANDLE hInstall)                                                       \
    {                                                                                                        \
        return CarryOut(hInstall, action);                                                                   \
    }
