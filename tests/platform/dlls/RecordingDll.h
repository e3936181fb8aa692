#pragma once

#include <windows.h>

/// What the DLLs of the loader's tests tell: their DllMain finds this in the program, whose address the
/// environment variable LOADER_TEST_RECORD holds.
struct LoaderTestRecord
{
    DWORD dwAttached;
    DWORD dwDetached;
    HINSTANCE hInstance;
    BOOL bAnswer;          ///< of DLL_PROCESS_ATTACH
    BOOL bFault;           ///< instead of answering
    LPCWSTR szLoadInside;  ///< a DLL to load in DLL_PROCESS_ATTACH; null for none
    HMODULE hLoadedInside; ///< what came of it
};
