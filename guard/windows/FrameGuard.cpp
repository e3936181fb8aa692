#include "FrameGuard.h"

#include "ExceptionFrame.h"
#include "ForeignException.h"

namespace FaultGuard {
namespace {

/// The entry of a guard, which LumRunGuardEntry makes.
struct __attribute__((may_alias)) CGuardEntry : CExceptionFrame
{
    CFrameGuard* pGuard;
};

/// A breakpoint or a single step that an attached debugger waits for.
bool IsForDebugger(DWORD dwCode) noexcept
{
    return (dwCode == EXCEPTION_BREAKPOINT || dwCode == EXCEPTION_SINGLE_STEP) &&
           IsDebuggerPresent() != FALSE;
}

} // namespace

// Assembly, because the entry must be found again although unwinding keeps no register but the stack pointer.
// The functions are naked, rather than a text outside of all functions, because a link-time optimiser does
// not look into such a text.

extern "C" {

__attribute__((used)) EXCEPTION_DISPOSITION LumOnException(EXCEPTION_RECORD* pException,
                                                           CExceptionFrame* pFrame, CONTEXT*, void*);

#define LEAVE_ENTRY                                                                                          \
    "popl %fs:0\n\t"                                                                                         \
    "addl $8, %esp\n\t"                                                                                      \
    "popl %edi\n\t"                                                                                          \
    "popl %esi\n\t"                                                                                          \
    "popl %ebx\n\t"                                                                                          \
    "popl %ebp\n\t"                                                                                          \
    "ret"

/// Runs pfnCall(pContext) inside an entry for the guard. Returns 0 when the call has returned, 1 when
/// LumEndGuardEntry has ended it.
__attribute__((naked, noipa)) int LumRunGuardEntry(CFrameGuard* /*pGuard*/, void (* /*pfnCall*/)(void*),
                                                   void* /*pContext*/)
{
    asm("pushl %ebp\n\t"
        "movl %esp, %ebp\n\t"
        "pushl %ebx\n\t"
        "pushl %esi\n\t"
        "pushl %edi\n\t"
        "pushl 8(%ebp)\n\t"
        "pushl $_LumOnException\n\t"
        "pushl %fs:0\n\t"
        "movl %esp, %fs:0\n\t"
        "pushl 16(%ebp)\n\t"
        "call *12(%ebp)\n\t"
        "addl $4, %esp\n\t"
        "xorl %eax, %eax\n\t" LEAVE_ENTRY);
}

/// Unwinds all frames inside the entry and lets its LumRunGuardEntry return.
__attribute__((naked, noipa)) void LumEndGuardEntry(CExceptionFrame* /*pFrame*/,
                                                    EXCEPTION_RECORD* /*pException*/)
{
    asm("movl 4(%esp), %eax\n\t"
        "movl 8(%esp), %ecx\n\t"
        "pushl %eax\n\t"
        "pushl $0\n\t"
        "pushl %ecx\n\t"
        "pushl $1f\n\t"
        "pushl %eax\n\t"
        "call _RtlUnwind@16\n"
        "1:\n\t"
        "popl %esp\n\t"
        "movl $1, %eax\n\t"
        "cld\n\t" LEAVE_ENTRY);
}

EXCEPTION_DISPOSITION LumOnException(EXCEPTION_RECORD* pException, CExceptionFrame* pFrame, CONTEXT*, void*)
{
    if (!IsUnwinding(*pException) && static_cast<CGuardEntry*>(pFrame)->pGuard->Take(*pException)) {
        LumEndGuardEntry(pFrame, pException);
    }
    return ExceptionContinueSearch;
}
}

bool CFrameGuard::Run(void (*pfnCall)(void*), void* pContext)
{
    return LumRunGuardEntry(this, pfnCall, pContext) == 0;
}

bool CFrameGuard::Take(const EXCEPTION_RECORD& exception) noexcept
{
    if (IsForDebugger(exception.ExceptionCode)) {
        return false;
    }
    m_dwCode = exception.ExceptionCode;
    m_pHostException = TakeHostException(exception);
    return true;
}

} // namespace FaultGuard
