#include "Faults.h"

#include <x86intrin.h>

#include "guard/StructuredExceptions.h"

// The operands are volatile, so that no compiler can foresee the fault and do something else; the
// sanitizers are told that it is meant.
#define MEANT_TO_FAULT __attribute__((noinline, no_sanitize("address", "undefined")))

namespace {

MEANT_TO_FAULT void WriteNull()
{
    volatile int* volatile pNull = nullptr;
    *pNull = 1;
}

MEANT_TO_FAULT void WriteCode()
{
    void (*volatile pfnCode)() = ReadNull;
    *reinterpret_cast<volatile char*>(pfnCode) = 0;
}

MEANT_TO_FAULT void DivideByZero()
{
    volatile int nDividend = 1;
    volatile int nDivisor = 0;
    volatile int nQuotient = nDividend / nDivisor;
    static_cast<void>(nQuotient);
}

/// Leaves the unit with unmasked exceptions, rounding towards zero, and a pending exception.
MEANT_TO_FAULT void DivideFloatByZero()
{
    const unsigned short wControl = 0x0F7B;
    asm volatile("fldcw %0; fld1; fldz; fdivrp; fwait" : : "m"(wControl));
}

MEANT_TO_FAULT int ExhaustStackFrom(int nDepth)
{
    volatile int frame[256] = {nDepth};
    // The condition only keeps the compilers from warning of a recursion without end.
    return nDepth < 0 ? 0 : ExhaustStackFrom(nDepth + 1) + frame[0];
}

void ExhaustStack()
{
    ExhaustStackFrom(0);
}

MEANT_TO_FAULT void ExecuteNonsense()
{
    asm volatile("ud2");
}

MEANT_TO_FAULT void Break()
{
    asm volatile("int3");
}

/// The processor stops after the next instruction.
MEANT_TO_FAULT void Step()
{
    constexpr unsigned TRAP_FLAG = 0x100;
    __writeeflags(__readeflags() | TRAP_FLAG);
}

} // namespace

MEANT_TO_FAULT void ReadNull()
{
    const volatile int* volatile pNull = nullptr;
    static_cast<void>(*pNull);
}

const CFault CFault::s_All[10] = {
    {"null read", ReadNull, 0xC0000005},
    {"null write", WriteNull, 0xC0000005},
    {"write to code", WriteCode, 0xC0000005},
    {"integer division by zero", DivideByZero, 0xC0000094},
    {"floating-point division by zero", DivideFloatByZero, 0xC000008E},
    {"stack overflow", ExhaustStack, 0xC00000FD},
    {"illegal instruction", ExecuteNonsense, 0xC000001D},
    {"breakpoint", Break, 0x80000003},
    {"single step", Step, 0x80000004},
    {"C++ exception of another compiler", FaultGuard::RaiseForeignException, 0xE06D7363},
};
