#pragma once

#include "GinaObject.h"

/// One of the 19 forwarded operations of a GINA object.
struct CChainedCall
{
    const char* szName;
    /// Calls it with arguments of its own; gives 0 for an operation without a result.
    int (*pfnCall)(CGinaObject& object, GinaNode* pNode);
};

extern const CChainedCall CHAINED_CALLS[19];
