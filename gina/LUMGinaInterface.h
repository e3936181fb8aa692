#pragma once

#include "LUMGina.h"

/// The single host, from process attach to process detach; null when there was no memory for it.
/// Written only there.
extern CLUMGina* g_pLUMGina;

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pvReserved);
