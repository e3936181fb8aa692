#pragma once

// What the tests and the plugin of the other compiler know of each other. Neither side's system headers
// may be needed here.

/// What the frames of the plugin saw during one scenario.
struct AbiReport
{
    int nEntered;         ///< objects constructed
    int nDestroyed;       ///< objects destroyed
    int nCaught;          ///< exceptions that a handler of the plugin got
    unsigned long dwCode; ///< the code that a structured handler saw
};

/// An operation of the host, as the plugin calls it.
using AbiOperation = void(__cdecl*)(void* pContext);

/// One exported scenario: calls pfnOperation(pContext) from frames of the kind that its name tells, and
/// notes in the report what they saw.
using AbiScenario = void(__cdecl*)(AbiOperation pfnOperation, void* pContext, AbiReport* pReport);
