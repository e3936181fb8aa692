#pragma once

#include "Slots.h"

// What the tests and the whole plugin of the other compiler know of each other. Neither side's system
// headers may be needed here.

/// What the plugin does in one of its calls.
enum AbiDeed
{
    ABI_PASS_ON,           ///< calls the next object; answers TRUE where there is none to call
    ABI_ANSWER,            ///< answers without calling anybody
    ABI_CHANGE,            ///< calls the next object, and answers
    ABI_CATCH_AND_RETHROW, ///< lets go on what came from the next object
    ABI_CATCH_AND_ANSWER,  ///< swallows what came from the next object, and answers
    ABI_TRY_TWICE,         ///< calls the next object again when it failed
    ABI_THROW,             ///< an exception of its own
    ABI_READ_NULL,
    ABI_DIVIDE_BY_ZERO,
    ABI_EXHAUST_STACK,
    ABI_WAIT,            ///< sets nWaiting to 1, and waits until that is -1
    ABI_NAME_BY_CONSTANT ///< leaves a text in the record that cannot be freed; with LUMNegotiate only
};

enum AbiCall
{
#define ABI_ENUMERATOR(SLOT, NAME) ABI_##NAME = SLOT,
    ABI_CALLS(ABI_ENUMERATOR)
#undef ABI_ENUMERATOR
        ABI_Unload = 25 ///< no call: the plugin's DllMain, when its DLL is unloaded
};

/// What the plugin is told, and what it tells.
struct AbiChainState
{
    // Told.
    int nCall; ///< the one with the deed; all others are passed on
    AbiDeed deed;
    int nAnswer;

    // Both.
    volatile int nWaiting;

    // Seen.
    unsigned nErrorModeAtLoading;
    int nCaught;   ///< exceptions from the next object
    int nAlive;    ///< objects of the plugin's frames that were not destroyed
    void* hPlugin; ///< the rest is from the plugin's own context, in its last forwarded call
    void* hHost;
    void* hWlx;
    const wchar_t* szDLL;
    unsigned long dwNegotiated;
};

/// The export "AbiChain".
using PFN_ABI_CHAIN = AbiChainState*(__cdecl*)();
