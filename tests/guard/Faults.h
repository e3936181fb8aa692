#pragma once

#include <windows.h>

/// One way in which code of a DLL goes wrong.
struct CFault
{
    const char* szName;
    void (*pfnCommit)();
    DWORD dwCode; ///< what a guarded call reports

    static const CFault s_All[10];
};

/// Reads through a null pointer.
void ReadNull();
