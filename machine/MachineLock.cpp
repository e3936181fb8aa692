#include "machine/MachineLock.h"

#include "machine/SetupError.h"
#include "machine/Text.h"

namespace {

constexpr DWORD PAUSE_MILLISECONDS = 20;
constexpr DWORD PATIENCE_MILLISECONDS = 30000;

} // namespace

CMachineLock::CMachineLock(const std::string& registry, Waiting* pfnWaiting)
{
    DWORD dwError = Take(registry);
    if (dwError == ERROR_SHARING_VIOLATION) {
        pfnWaiting();
    }
    const DWORD dwStart = GetTickCount();
    while (dwError == ERROR_SHARING_VIOLATION && GetTickCount() - dwStart < PATIENCE_MILLISECONDS) {
        Sleep(PAUSE_MILLISECONDS);
        dwError = Take(registry);
    }
    if (dwError == ERROR_SHARING_VIOLATION) {
        throw CSetupError("another program has been at the chain of this machine for half a minute; nothing "
                          "was done");
    }
    if (dwError == ERROR_ACCESS_DENIED) {
        throw CSetupError(
            "the chain of this machine is locked by another user's program, or this one is not run "
            "by an administrator; nothing was done");
    }
    if (dwError != ERROR_SUCCESS) {
        throw CSetupError(
            Format("the chain of this machine cannot be locked against other programs: error %u",
                   static_cast<unsigned>(dwError)));
    }
}
