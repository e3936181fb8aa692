#include "GuardEntry.h"

#include "HostFrames.h"

namespace FaultGuard {

extern "C" {

/// Gives 0 when the call returned, 1 when LumEndGuardEntry ended it.
int LumRunGuardEntry(CFrameGuard* pGuard, void (*pfnCall)(void*), void* pContext);

/// Unwinds all frames inside the entry and lets its LumRunGuardEntry return.
[[noreturn]] void LumEndGuardEntry(CExceptionFrame* pFrame, EXCEPTION_RECORD* pException);

__attribute__((used)) EXCEPTION_DISPOSITION LumOnException(EXCEPTION_RECORD* pException,
                                                           CExceptionFrame* pFrame, CONTEXT*, void*)
{
    if (!IsUnwinding(*pException) && !HasDefaultFaultsInside(pFrame) &&
        static_cast<CGuardEntry*>(pFrame)->pGuard->Take(*pException))
    {
        LumEndGuardEntry(pFrame, pException);
    }
    return ExceptionContinueSearch;
}
}

// Assembly, because the entry must be found again when no register is what it was: the unwinding keeps
// the stack pointer alone.
asm(R"(
    .text
    .p2align 4
    .globl _LumRunGuardEntry
_LumRunGuardEntry:
    pushl %ebp
    movl %esp, %ebp
    pushl %ebx
    pushl %esi
    pushl %edi
    pushl 8(%ebp)
    pushl $_LumOnException
    pushl %fs:0
    movl %esp, %fs:0
    pushl 16(%ebp)
    call *12(%ebp)
    addl $4, %esp
    xorl %eax, %eax
1:  popl %fs:0
    addl $8, %esp
    popl %edi
    popl %esi
    popl %ebx
    popl %ebp
    ret

    .p2align 4
    .globl _LumEndGuardEntry
_LumEndGuardEntry:
    movl 4(%esp), %eax
    movl 8(%esp), %ecx
    pushl %eax
    pushl $0
    pushl %ecx
    pushl $2f
    pushl %eax
    call _RtlUnwind@16
2:  popl %esp
    movl $1, %eax
    cld
    jmp 1b
)");

bool CGuardEntry::Run(CFrameGuard& guard, void (*pfnCall)(void*), void* pContext)
{
    return LumRunGuardEntry(&guard, pfnCall, pContext) == 0;
}

bool CGuardEntry::Is(const CExceptionFrame& frame) noexcept
{
    return frame.pfnHandler == reinterpret_cast<const void*>(LumOnException);
}

} // namespace FaultGuard
