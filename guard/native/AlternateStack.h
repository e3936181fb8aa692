#pragma once

namespace FaultGuard {

/// Calls pfnCall(pContext) with an alternate stack for signals, without which a stack overflow cannot be
/// handled. A thread that has none gets one for the time of the call.
void CallWithAlternateStack(void (*pfnCall)(void*), void* pContext);

} // namespace FaultGuard
