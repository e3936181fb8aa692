#pragma once

#include <exception>
#include <type_traits>
#include <utility>

#include <windows.h>

// The one component that knows how to survive a loaded DLL.
//
// A GINA or plugin is somebody else's code. It may read a null pointer, divide by zero, run out of
// stack, or throw an exception of a compiler whose frames ours cannot unwind. Who calls whom:
//
// clang-format off
//   function          from           into                        a fault in there             an exception of the host
//   ----------------  -------------  --------------------------  ---------------------------  -----------------------------
//   CallIntoDLL       host           a DLL                       a CForeignFault              stays as it is
//   CallWithinHost    host           code of the host that       a CForeignFault              stays as it is
//                                    reads what a DLL may
//                                    have written
//   CallBackIntoHost  a DLL, or the  an operation of the host    goes to the guard around     goes to the caller; through a
//                     host                                       the call of the caller       DLL's frames in the form of
//                                                                                             the DLL's own compiler
// clang-format on
//
// Faults are those of the processor, a breakpoint that no debugger waits for, and exceptions that the host
// did not throw. Calls nest in any order: a fault ends the innermost guarded call, and reaches the one around
// it as an exception. Guards belong to their thread. A fault outside all guarded calls keeps its default
// effect: the host does not hide its own bugs.
//
// On Windows each module that links this has its own guards, and ignores those of other modules. On Linux all
// modules of the process share them, and exceptions of the host cross a DLL's frames by themselves.

/// What a guarded call throws for a fault.
class CForeignFault : public std::exception
{
public:
    explicit CForeignFault(DWORD dwCode) noexcept : m_dwCode(dwCode) {}

    /// The exception code of Windows: 0xC0000005 for an access violation, 0xC0000094 for an integer division
    /// by zero, 0xC00000FD for a stack overflow, 0xE06D7363 for a C++ exception of another compiler,
    /// otherwise the code that was raised.
    DWORD GetCode() const noexcept { return m_dwCode; }
    const char* what() const noexcept override { return "a loaded DLL faulted"; }

private:
    DWORD m_dwCode;
};

/// Who called the function that makes one: its return address. In a function that was inlined, it is that of
/// the function around it, which will do: both are the host's.
struct CCaller
{
    CCaller(const void* pReturnAddressArg = __builtin_return_address(0)) noexcept
        : pReturnAddress(pReturnAddressArg)
    {
    }

    const void* pReturnAddress;
};

namespace FaultGuard {

/// Runs pfnCall(pContext) inside a guard of this thread.
///
/// Throws CForeignFault for a fault in it. An exception of the host leaves it unchanged, whether pfnCall
/// threw it or it crossed the DLL's frames. After any of them the thread can go on and be guarded again: its
/// stack can overflow once more, its floating-point unit and signal mask are as they were, and C++ handlers
/// that the fault left open are closed. Objects in the frames that a fault ends are not destroyed.
///
/// The last error after the call is the one that pfnCall left.
void RunGuarded(void (*pfnCall)(void*), void* pContext);

/// Throws pException to the caller: as it is when the caller is in this module, otherwise in the form that a
/// DLL's frames understand. No frame between this call and the caller may hold an object with a destructor.
/// On its way the exception belongs to the DLL's frames: one that swallows it releases it.
[[noreturn]] void ThrowToCaller(const CCaller& caller, std::exception_ptr pException);

} // namespace FaultGuard

/// Calls into a loaded DLL: runs call() inside a guard and returns its result. Throws as RunGuarded.
template <typename Call>
auto CallIntoDLL(Call call)
{
    using Result = std::invoke_result_t<Call>;
    if constexpr (std::is_void_v<Result>) {
        FaultGuard::RunGuarded([](void* pContext) { (*static_cast<Call*>(pContext))(); }, &call);
    } else {
        struct
        {
            Call& call;
            Result result;
        } context{call, Result()};
        using Context = decltype(context);
        FaultGuard::RunGuarded(
            [](void* pContext) {
                auto& self = *static_cast<Context*>(pContext);
                self.result = self.call();
            },
            &context);
        return context.result;
    }
}

/// Runs code of the host inside a guard. For code that reads what a DLL can overwrite: a fault becomes an
/// exception, so the destructors of the caller's frames run and release its locks.
template <typename Call>
auto CallWithinHost(Call call)
{
    return CallIntoDLL(call);
}

/// Runs an operation that a loaded DLL may have called. caller: where the operation's own function returns
/// to. Exceptions leave through ThrowToCaller, so what the operation captures must have trivial destructors.
template <typename Operation>
auto CallBackIntoHost(const CCaller& caller, Operation operation) -> std::invoke_result_t<Operation>
{
    static_assert(std::is_trivially_destructible_v<Operation>);
    std::exception_ptr pException;
    try {
        return operation();
    } catch (...) {
        pException = std::current_exception();
    }
    FaultGuard::ThrowToCaller(caller, std::move(pException));
}
