#include "AlternateStack.h"

#include <csignal>

namespace FaultGuard {
namespace {

// Room for the processor's state, which has grown to some 11 KB, and for a small handler.
constexpr std::size_t ALTERNATE_STACK_SIZE = 32768;

/// The thread's alternate stack for signals. It lies in the frame that holds this object. The frames that
/// overflow the thread's stack come after it, so it is still free.
class CAlternateStack
{
public:
    CAlternateStack() noexcept
    {
        stack_t stack = {};
        stack.ss_sp = m_Bytes;
        stack.ss_size = sizeof(m_Bytes);
        sigaltstack(&stack, nullptr);
    }
    ~CAlternateStack()
    {
        stack_t none = {};
        none.ss_flags = SS_DISABLE;
        sigaltstack(&none, nullptr);
    }
    CAlternateStack(const CAlternateStack&) = delete;
    CAlternateStack& operator=(const CAlternateStack&) = delete;

private:
    alignas(16) unsigned char m_Bytes[ALTERNATE_STACK_SIZE];
};

bool HasAlternateStack() noexcept
{
    stack_t stack = {};
    sigaltstack(nullptr, &stack);
    return (stack.ss_flags & SS_DISABLE) == 0;
}

// A function of its own, so that only the outermost guard of a thread has the large frame.
__attribute__((noinline)) void CallWithOwnStack(void (*pfnCall)(void*), void* pContext)
{
    const CAlternateStack stack;
    pfnCall(pContext);
}

} // namespace

void CallWithAlternateStack(void (*pfnCall)(void*), void* pContext)
{
    if (HasAlternateStack()) {
        pfnCall(pContext);
    } else {
        CallWithOwnStack(pfnCall, pContext);
    }
}

} // namespace FaultGuard
