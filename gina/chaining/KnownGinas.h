#pragma once

#include "ChainingRecord.h"
#include "GinaNames.h"

/// A GINA that is known without a chaining record in the registry.
struct CKnownGina
{
    const WCHAR* szGinaDLL;
    CChainingRecord record;
};

// clang-format off
inline constexpr CKnownGina KNOWN_GINAS[] = {
    {SYSTEM_GINA,              {{},                                          {},                 {},          true,  true,  false, false}},
    {TEXT("sbgina_sim.dll"),   {{},                                          {},                 {},          true,  true,  false, false}},
    {TEXT("TRGINA.DLL"),       {{},                                          {},                 {},          true,  true,  false, false}},
    {TEXT("qslogon.dll"),      {{},                                          {},                 {},          true,  true,  false, false}},
    {TEXT("wpnGina.dll"),      {TEXT("SOFTWARE\\Tamsin\\Airlink\\wpnGina"), TEXT("OldGinaDLL"), SYSTEM_GINA, false, false, false, false}},
    {TEXT("PLinkGina.dll"),    {TEXT("SOFTWARE\\ORX\\PortLink\\PLinkGina"), TEXT("OldGinaDLL"), SYSTEM_GINA, false, false, false, false}},
    {TEXT("BVGina01.DLL"),     {TEXT("SOFTWARE\\Brevik Systems\\Gina"),      TEXT("GinaDLL"),    SYSTEM_GINA, false, false, true,  false}},
    // The GINA behind this library in the chain is the one that it passes through to.
    {HOST_GINA,                {LUM_GINA_MTM,                             TEXT("GinaDLL"),    SYSTEM_GINA, false, false, false, false}},
    {TEXT("kvs_gina.dll"),     {TEXT("SOFTWARE\\ORX\\KVS\\Gina"),           TEXT("GinaDLL"),    {},          false, false, false, false}},
};
// clang-format on

/// The table's record of a GINA; null if the table does not have it.
inline const CChainingRecord* FindInTable(const WCHAR* szGinaDLL) noexcept
{
    for (const CKnownGina& known : KNOWN_GINAS) {
        if (EqualNames(known.szGinaDLL, szGinaDLL)) {
            return &known.record;
        }
    }
    return nullptr;
}
