#pragma once

#include "GinaNames.h"

/// A GINA that is known without a chaining record.
struct CKnownGina
{
    const WCHAR* szGinaDLL;
    const WCHAR* szSubKey;
    const WCHAR* szOldGinaDLLKey;
    const WCHAR* szDefaultGinaDLL;
    bool bTerminator;
    bool bStandalone;
    bool bMustBeFirst;
    bool bIsIncompatible;
};

// clang-format off
inline constexpr CKnownGina KNOWN_GINAS[] = {
    {SYSTEM_GINA,              nullptr,                                     nullptr,            nullptr,     true,  true,  false, false},
    {TEXT("sbgina_sim.dll"),   nullptr,                                     nullptr,            nullptr,     true,  true,  false, false},
    {TEXT("TRGINA.DLL"),       nullptr,                                     nullptr,            nullptr,     true,  true,  false, false},
    {TEXT("qslogon.dll"),      nullptr,                                     nullptr,            nullptr,     true,  true,  false, false},
    {TEXT("wpnGina.dll"),      TEXT("SOFTWARE\\Tamsin\\Airlink\\wpnGina"),   TEXT("OldGinaDLL"), SYSTEM_GINA, false, false, false, false},
    {TEXT("PLinkGina.dll"),    TEXT("SOFTWARE\\ORX\\PortLink\\PLinkGina"),   TEXT("OldGinaDLL"), SYSTEM_GINA, false, false, false, false},
    {TEXT("BVGina01.DLL"),     TEXT("SOFTWARE\\Brevik Systems\\Gina"),       TEXT("GinaDLL"),    SYSTEM_GINA, false, false, true,  false},
    // The GINA that follows this system in the chain is the one that it passes through to.
    {HOST_GINA,                TEXT("SOFTWARE\\ORX\\LUM\\Gina"),             TEXT("GinaDLL"),    SYSTEM_GINA, false, false, false, false},
    {TEXT("kvs_gina.dll"),     TEXT("SOFTWARE\\ORX\\KVS\\Gina"),             TEXT("GinaDLL"),    nullptr,     false, false, false, false},
};
// clang-format on
