#pragma once

#include <new>

#include "platform/FaultInjection.h"

// The frame around every call of the layer that can fail. Only here failures are injected. Only here what
// goes wrong inside becomes an error code, a lack of memory included: no C++ exception may reach a caller of
// Win32.

namespace Native {

/// Ends a call that reports through the last error.
struct CCallError
{
    DWORD dwError;
};

inline DWORD TakeFault(PlatformCall call, CCallName name) noexcept
{
    return g_nInjections.load(std::memory_order_relaxed) == 0 ? ERROR_SUCCESS : TakeInjectedFault(call, name);
}

/// A call that returns its error code.
template <typename Body>
LONG CodeCall(PlatformCall call, CCallName name, Body body) noexcept
{
    const DWORD dwFault = TakeFault(call, name);
    if (dwFault != ERROR_SUCCESS) {
        return static_cast<LONG>(dwFault);
    }
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

/// A call that returns `failure` and sets the last error when its body throws CCallError.
template <typename Result, typename Body>
Result LastErrorCall(PlatformCall call, CCallName name, Result failure, Body body) noexcept
{
    DWORD dwError = TakeFault(call, name);
    if (dwError == ERROR_SUCCESS) {
        try {
            return body();
        } catch (const CCallError& error) {
            dwError = error.dwError;
        } catch (const std::bad_alloc&) {
            dwError = ERROR_NOT_ENOUGH_MEMORY;
        }
    }
    SetLastError(dwError);
    return failure;
}

/// Throws CCallError unless bCondition holds.
inline void Require(bool bCondition, DWORD dwError)
{
    if (!bCondition) {
        throw CCallError{dwError};
    }
}

} // namespace Native
