#pragma once

#include "ForeignFrames.h"

/// Defines an exported scenario.
#define ABI_SCENARIO(name)                                                                                   \
    extern "C" __declspec(dllexport) void __cdecl name(AbiOperation pfnOperation, void* pContext,            \
                                                       AbiReport* pReport)

/// An object in a frame, of which the report tells whether it was destroyed.
class CWitness
{
public:
    explicit CWitness(AbiReport* pReport) : m_pReport(pReport) { ++m_pReport->nEntered; }
    ~CWitness() { ++m_pReport->nDestroyed; }

private:
    AbiReport* m_pReport;
};
