#pragma once

#include <exception>
#include <type_traits>
#include <utility>

#include <windows.h>

// The one component that knows how to survive a loaded DLL.
//
// A GINA or plugin is somebody else's code. It may read a null pointer, divide by zero, run out of
// stack, or throw an exception of a compiler whose frames ours cannot unwind. Four things are
// offered here, and nothing else in the system knows how they work:
//
//   GuardedCall    calls into a DLL; whatever goes wrong in it arrives as a C++ exception.
//   GuardedHostCall  runs code of the host's that reads what a DLL may have written.
//   CalledFromDLL  wraps an operation that a DLL calls; an exception that leaves the operation
//                  travels through the DLL's frames, whose own handlers and destructors see it.
//   CHostFrames    marks the frames from here on as the host's: at the start of its own threads, and for a
//                  call that comes back from Winlogon while a DLL of the same thread is in a guarded call.
//
// On Windows each module that links this has its own: to one module, the guard of another is a frame
// like any other. Natively all modules of the process share one.
//
// All of it is per thread, and guarded calls nest. A fault outside a guarded call keeps its default
// effect: the host does not hide its own bugs.

/// What a guarded call throws for a processor fault, or an exception that is not the host's own.
class CForeignFault : public std::exception
{
public:
    explicit CForeignFault(DWORD dwCode) noexcept : m_dwCode(dwCode) {}

    /// The exception code as the platform names it: 0xC0000005 for an access violation, 0xC0000094
    /// for an integer division by zero, 0xC00000FD for a stack overflow, 0xE06D7363 for a C++
    /// exception of another compiler, otherwise the code that was raised.
    DWORD GetCode() const noexcept { return m_dwCode; }
    const char* what() const noexcept override { return "a loaded DLL faulted"; }

private:
    DWORD m_dwCode;
};

namespace FaultGuard {

/// Runs pfnCall(pContext) inside a guard of this thread.
///
/// Throws CForeignFault for a processor fault or a foreign exception in it. An exception of the host
/// leaves it unchanged, whether pfnCall threw it or it crossed the DLL's frames (see CalledFromDLL).
/// After any of them the thread can go on and be guarded again: its stack can overflow once more, its
/// floating-point unit and signal mask are as they were, and C++ handlers that the fault left open are
/// closed. Objects of the host's own frames inside the call are not destroyed by a fault.
///
/// The last error after the call is the one that pfnCall left. Notifications meant for a debugger (a
/// breakpoint, a single step, debug output) are not faults and pass by.
void RunGuarded(void (*pfnCall)(void*), void* pContext);

/// Throws pException to the caller of the current operation: as it is when the frames in between are the
/// host's, otherwise in the form that the DLL's frames understand. On a thread without a guard and without
/// CHostFrames the caller is a DLL, which has started the thread.
///
/// No frame between this call and the DLL may hold an object with a destructor. While the exception
/// travels it belongs to the DLL's frames: one that swallows it releases it.
[[noreturn]] void ThrowToCaller(std::exception_ptr pException);

/// Raises a C++ exception as the compiler of real plugins does, one that the host did not throw.
/// For stand-in DLLs that must fail like a plugin; never returns.
[[noreturn]] void RaiseForeignException();

} // namespace FaultGuard

/// What a fault in host frames means to the guarded call that is further out.
enum class HostFaults
{
    Default, ///< not its business: the fault keeps its default effect
    Guarded  ///< the call has failed, as it has when the DLL faults itself
};

/// Marks the frames of this scope as the host's own, whatever guarded call is further out: what is
/// thrown in them is an ordinary C++ exception. An automatic object only: scopes end in reverse order.
class CHostFrames
{
public:
    explicit CHostFrames(HostFaults faults = HostFaults::Default) noexcept;
    ~CHostFrames();
    CHostFrames(const CHostFrames&) = delete;
    CHostFrames& operator=(const CHostFrames&) = delete;

private:
    // On Windows this is an entry of the thread's list of exception frames, which fixes the fields;
    // natively m_pOuter is the guard that takes no faults in this scope, if there is one.
    void* m_pOuter;
    [[maybe_unused]] const void* m_pfnHandler;
};

/// Calls into a loaded DLL: runs call() inside a guard and returns its result. Throws as RunGuarded.
template <typename Call>
auto GuardedCall(Call call)
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

/// Runs code of the host's own in a guard: a fault in it arrives as CForeignFault, so that what the caller
/// holds, as a lock, is let go. For code that reads what a DLL can write to.
template <typename Call>
auto GuardedHostCall(Call call)
{
    return GuardedCall([&]() -> std::invoke_result_t<Call> {
        const CHostFrames frames(HostFaults::Guarded);
        return call();
    });
}

/// Runs an operation that a loaded DLL may have called. What the operation throws goes through
/// ThrowToCaller, and a fault in it fails the DLL's call: a DLL can hand over any pointer. Operations
/// may call each other. The arguments that operation captures must have trivial destructors.
///
/// Not inlined, because a list of exception frames has to lie on the stack in its order.
template <typename Operation>
__attribute__((noinline)) auto CalledFromDLL(Operation operation) -> std::invoke_result_t<Operation>
{
    static_assert(std::is_trivially_destructible_v<Operation>);
    std::exception_ptr pException;
    try {
        // Between two operations there is no DLL, so the inner one must not throw as if there were.
        const CHostFrames frames(HostFaults::Guarded);
        return operation();
    } catch (...) {
        pException = std::current_exception();
    }
    FaultGuard::ThrowToCaller(std::move(pException));
}
