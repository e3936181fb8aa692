#pragma once

namespace FaultGuard {

/// Calls pfnCall(pContext) on a thread that has a stack for its signal handlers, which a stack overflow
/// needs. A thread that has none is lent one for the time of the call.
void CallWithAlternateStack(void (*pfnCall)(void*), void* pContext);

} // namespace FaultGuard
