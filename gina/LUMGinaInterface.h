#pragma once

#include "LUMGina.h"

/// The single host, from process attach to process detach, and written only there. Null when there was no
/// memory for it.
extern CLUMGina* g_pLUMGina;

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pvReserved);
