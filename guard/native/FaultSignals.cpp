#include "FaultSignals.h"

#include <iterator>

#include <ucontext.h>

#include "SignalGuard.h"

namespace FaultGuard {
namespace {

constexpr DWORD ANY_FAULT = 0xC0000005; // an access violation, also reported for a fault without a row
constexpr DWORD STACK_OVERFLOW = 0xC00000FD;

/// The exception code for a signal; nDetail 0 stands for every detail that has no row.
struct CFaultRow
{
    int nSignal;
    int nDetail;
    DWORD dwCode;
} constexpr s_Faults[] = {
    {SIGFPE, FPE_INTDIV, 0xC0000094}, {SIGFPE, FPE_INTOVF, 0xC0000095},  {SIGFPE, FPE_FLTDIV, 0xC000008E},
    {SIGFPE, FPE_FLTRES, 0xC000008F}, {SIGFPE, FPE_FLTINV, 0xC0000090},  {SIGFPE, FPE_FLTOVF, 0xC0000091},
    {SIGFPE, FPE_FLTUND, 0xC0000093}, {SIGILL, 0, 0xC000001D},           {SIGBUS, 0, 0xC0000006},
    {SIGSEGV, 0, ANY_FAULT},          {SIGTRAP, TRAP_TRACE, 0x80000004}, {SIGTRAP, 0, 0x80000003},
};

constexpr int s_Signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP};

struct sigaction s_Previous[std::size(s_Signals)];

struct sigaction& GetPrevious(int nSignal) noexcept
{
    std::size_t nIndex = 0;
    while (s_Signals[nIndex] != nSignal) {
        ++nIndex;
    }
    return s_Previous[nIndex];
}

const void* GetStackPointer(const void* pMachine) noexcept
{
    const auto nStackPointer = static_cast<const ucontext_t*>(pMachine)->uc_mcontext.gregs[REG_RSP];
    return reinterpret_cast<const void*>(nStackPointer);
}

DWORD GetCode(const siginfo_t& info, const void* pMachine, const CSignalGuard& guard) noexcept
{
    if (info.si_signo == SIGSEGV && guard.IsInFrames(info.si_addr, GetStackPointer(pMachine))) {
        return STACK_OVERFLOW;
    }
    for (const CFaultRow& row : s_Faults) {
        if (row.nSignal == info.si_signo && (row.nDetail == info.si_code || row.nDetail == 0)) {
            return row.dwCode;
        }
    }
    return ANY_FAULT;
}

/// A positive code is the processor's report; otherwise somebody sent the signal.
bool IsFault(const siginfo_t& info) noexcept
{
    return info.si_code > 0;
}

void PassOn(int nSignal, siginfo_t* pInfo, void* pMachine) noexcept
{
    const struct sigaction& previous = GetPrevious(nSignal);
    if ((previous.sa_flags & SA_SIGINFO) != 0) {
        previous.sa_sigaction(nSignal, pInfo, pMachine);
    } else if (previous.sa_handler != SIG_DFL && previous.sa_handler != SIG_IGN) {
        previous.sa_handler(nSignal);
    } else {
        // On return the faulting instruction runs again, and the default action ends the process there.
        sigaction(nSignal, &previous, nullptr);
        if (!IsFault(*pInfo)) {
            raise(nSignal);
        }
    }
}

void OnSignal(int nSignal, siginfo_t* pInfo, void* pMachine) noexcept
{
    CSignalGuard* const pGuard = CSignalGuard::GetInnermost();
    if (pGuard != nullptr && IsFault(*pInfo)) {
        pGuard->Abandon(GetCode(*pInfo, pMachine, *pGuard));
    }
    PassOn(nSignal, pInfo, pMachine);
}

} // namespace

void CFaultSignals::Install()
{
    static const CFaultSignals s_Installed;
}

CFaultSignals::CFaultSignals()
{
    struct sigaction action = {};
    action.sa_sigaction = OnSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (const int nSignal : s_Signals) {
        sigaction(nSignal, &action, &GetPrevious(nSignal));
    }
}

// An unloaded module must leave no handlers behind: their code is gone.
CFaultSignals::~CFaultSignals()
{
    for (const int nSignal : s_Signals) {
        struct sigaction current = {};
        sigaction(nSignal, nullptr, &current);
        if ((current.sa_flags & SA_SIGINFO) != 0 && current.sa_sigaction == OnSignal) {
            sigaction(nSignal, &GetPrevious(nSignal), nullptr);
        }
    }
}

} // namespace FaultGuard
