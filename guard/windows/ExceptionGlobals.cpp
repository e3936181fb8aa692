#include <cstdlib>
#include <cxxabi.h>

#include <windows.h>

#include "guard/ThreadState.h"

// The C++ runtime's record of what each thread throws and handles, in place of the one that comes with the
// compiler. That one is a thread-local variable. When the library is about to be unloaded, the compiler's
// start-up code releases it before DllMain is called. The next exception would be noted in freed memory: the
// host could neither throw nor let plugins fail while it is destroyed. The variable would also cost the
// process one of its few TLS indexes each time that the library is loaded.

namespace {

using FaultGuard::CExceptionGlobals;

/// The records of all threads. The TLS index is taken when the first of them throws, and given back when the
/// module is unloaded, after DllMain.
class CGlobalsOfThreads
{
public:
    constexpr CGlobalsOfThreads() noexcept = default;
    ~CGlobalsOfThreads()
    {
        FreeOwn();
        TlsFree(static_cast<DWORD>(InterlockedExchange(&m_nIndex, NONE)));
    }
    CGlobalsOfThreads(const CGlobalsOfThreads&) = delete;
    CGlobalsOfThreads& operator=(const CGlobalsOfThreads&) = delete;

    /// The record of this thread. Keeps the last error. Ends the process if there is no memory for a record,
    /// as the compiler's own function does.
    CExceptionGlobals* GetOwn() noexcept
    {
        const DWORD dwError = GetLastError();
        const DWORD dwIndex = GetIndex();
        void* pGlobals = TlsGetValue(dwIndex);
        if (pGlobals == nullptr) {
            pGlobals = std::calloc(1, sizeof(CExceptionGlobals));
            if (pGlobals == nullptr || !TlsSetValue(dwIndex, pGlobals)) {
                std::abort();
            }
        }
        SetLastError(dwError);
        return static_cast<CExceptionGlobals*>(pGlobals);
    }

    /// Releases the record of this thread, if it has one. It gets another when it throws again.
    void FreeOwn() noexcept
    {
        if (m_nIndex != NONE) {
            std::free(TlsGetValue(static_cast<DWORD>(m_nIndex)));
            TlsSetValue(static_cast<DWORD>(m_nIndex), nullptr);
        }
    }

private:
    static constexpr LONG NONE = static_cast<LONG>(TLS_OUT_OF_INDEXES);

    DWORD GetIndex() noexcept
    {
        if (m_nIndex == NONE) {
            const DWORD dwIndex = TlsAlloc();
            if (InterlockedCompareExchange(&m_nIndex, static_cast<LONG>(dwIndex), NONE) != NONE) {
                TlsFree(dwIndex);
            }
        }
        return static_cast<DWORD>(m_nIndex);
    }

    volatile LONG m_nIndex = NONE;
};

constinit CGlobalsOfThreads s_Globals;

void NTAPI OnThread(PVOID, DWORD dwReason, PVOID) noexcept
{
    if (dwReason == DLL_THREAD_DETACH) {
        s_Globals.FreeOwn();
    }
}

// The linker collects what is in sections of such names into the table of TLS callbacks. The system calls
// them for threads that end, in a program as well as in a DLL.
__attribute__((section(".CRT$XLY"), used)) const PIMAGE_TLS_CALLBACK s_pfnOnThread = OnThread;

} // namespace

abi::__cxa_eh_globals* abi::__cxa_get_globals() noexcept
{
    return reinterpret_cast<__cxa_eh_globals*>(s_Globals.GetOwn());
}

abi::__cxa_eh_globals* abi::__cxa_get_globals_fast() noexcept
{
    return __cxa_get_globals();
}
