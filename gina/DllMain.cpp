#include <new>

#include "EventLog.h"
#include "Exceptions.h"
#include "LUMGinaInterface.h"
#include "Operation.h"
#include "guard/FaultGuard.h"

// Attach and detach of the library.

namespace {

constexpr WCHAR CLASS_NAME[] = TEXT("LUMDLLMain");
constexpr WCHAR TXT_CREATED[] = TEXT("LUM_GINA instantiated successfully");
constexpr WCHAR TXT_DETACHED[] = TEXT("Gina has been detached.");
constexpr WCHAR TXT_NOT_CREATED[] = TEXT("Could not instantiate LUMGina object. Aborting...");
constexpr WCHAR TXT_NOT_DELETED[] = TEXT("Could not delete LUMGina object on DLL_PROCESS_DETACH");

/// Thrown when a service thread could not be stopped: the host then stays as it is.
struct CThreadsRunOn
{
};

// A processor fault of the host in attach or detach counts as any other failure.

BOOL Attach(HINSTANCE hInstance) noexcept
{
    CEntryTrace(LUM_GINA_ORIGIN, CLASS_NAME, TEXT("ATTACH"));
    try {
        g_pLUMGina = CallWithinHost([=] { return new (std::nothrow) CLUMGina(hInstance); });
    } catch (...) {
        if (!ReportIf<CMessage>()) {
            CCritical(LUM_GINA_ORIGIN, TXT_NOT_CREATED);
        }
        return FALSE;
    }
    CTextNotification(LUM_GINA_ORIGIN, TXT_CREATED);
    CExitResultTrace(LUM_GINA_ORIGIN, CLASS_NAME, TEXT("ATTACH"), TRUE);
    return TRUE;
}

void DestroyHost()
{
    CloseEventLog();
    // If WlxShutdown was not called, the threads may still run.
    if (g_pLUMGina != nullptr && !g_pLUMGina->StopThreads()) {
        // They would return into code that is about to be unloaded.
        g_pLUMGina->SuspendThreads();
        throw CThreadsRunOn();
    }
    delete g_pLUMGina;
    g_pLUMGina = nullptr;
}

BOOL Detach() noexcept
{
    CEntryTrace(LUM_GINA_ORIGIN, CLASS_NAME, TEXT("DETACH"));
    try {
        CallWithinHost(DestroyHost);
    } catch (...) {
        CWarning(LUM_GINA_ORIGIN, TXT_NOT_DELETED);
        return TRUE;
    }
    CNotification(LUM_GINA_ORIGIN, TXT_DETACHED);
    CExitResultTrace(LUM_GINA_ORIGIN, CLASS_NAME, TEXT("DETACH"), TRUE);
    return TRUE;
}

} // namespace

CLUMGina* g_pLUMGina = nullptr;

BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID)
{
    switch (dwReason) {
    case DLL_PROCESS_ATTACH:
        return Attach(hInstance);
    case DLL_PROCESS_DETACH:
        return Detach();
    default:
        return TRUE;
    }
}
